#include "ppsession.h"

#include "ppbind.h"

namespace {

void titleWords(std::initializer_list<const char*> words) {
    for (const char* word : words) g_cstrm.setNextColm(word);
}

}  // namespace

void ppFuncTitleToCStream() {
    titleWords({"funcBase", "funcDataType", "funcDescriptor"});
}

void ppParmsTitleToCStream() {
    titleWords({"Len/Size", "Parm1", "Parm2", "Parm3", "Parm4", "scaleFactor"});
}

void ppSession::funcTitleToCStream() {
    ppFuncTitleToCStream();
}

void ppSession::parmsTitleToCStream() {
    ppParmsTitleToCStream();
}

void ppSession::listTests(int mode) {
    if (mode != 0) ppRegLibFunctions();
    psSession::listTests(mode);
}
