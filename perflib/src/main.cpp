#include <exception>
#include <memory>

#include "ps.h"
#include "psctrl87.h"
#include "psdata.h"
#include "psexcept.h"
#include "psfaults.h"
#include "psinterrupt.h"
#include "psremarks.h"

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

// Without --strict the exit status is 0 whatever a test comes to, failures show in the
// output; after an interruption it is that of the signal.
int main(int argc, char** argv) {
    psFlushDenormals();
    {
        const psTraceScope trace("main");
        try {
            runSession(argc, argv);
        } catch (const psException& e) {
            psFaults::count(psFault::test);
            g_ostrm << ERR << e.msg() << " in " << e.where() << "\n" << END_FLUSH;
        } catch (const std::exception& e) {
            psFaults::count(psFault::test);
            g_ostrm << ERR << "-- PS exception: " << e.what() << "\n" << END_FLUSH;
        }
        psFreeAll();
    }
    g_ostrm.close();
    g_ostrm.flush();
    psRemarks::print();
    psEndIfInterrupted();
    return psFaults::exitStatus();
}
