#include "pssettings.h"

psSettings psPublished::s_settings;

void psPublish(const psSettings& settings) {
    psPublished::s_settings = settings;
}
