// Orderly end of a run that is interrupted from outside.
#pragma once

// From here on SIGINT and SIGTERM only leave a note, which the run reads between
// two measurements; a second one ends the process at once. SIGPIPE is ignored:
// a closed pipe shows as a failed write.
void psCatchInterrupts();

// True once SIGINT or SIGTERM has come.
bool psInterrupted();

// Ends the process by the noted signal, as the caller of the process expects
// it; returns when none has come.
void psEndIfInterrupted();
