#include <exception>
#include <memory>

#include "ps.h"
#include "psctrl87.h"
#include "psdata.h"
#include "psexcept.h"
#include "psinterrupt.h"

using enum MessageLevel;

namespace {

void runSession(int argc, char** argv) {
    std::unique_ptr<psSession> plain;
    if (!pSession) {
        plain = std::make_unique<psSession>();
        psRegSession(plain.get());
    }
    pSession->run(argc, argv);
}

}  // namespace

// The exit status is 0 whatever happens: failures show in the output.
int main(int argc, char** argv) {
    psFlushDenormals();
    {
        const psTraceScope trace("main");
        try {
            runSession(argc, argv);
        } catch (const psException& e) {
            g_ostrm << ERR << e.msg() << " in " << e.where() << "\n" << END_FLUSH;
        } catch (const std::exception& e) {
            g_ostrm << ERR << "-- PS exception: " << e.what() << "\n" << END_FLUSH;
        }
        psFreeAll();
    }
    g_ostrm.flushWithConsole();
    psEndIfInterrupted();
    return 0;
}
