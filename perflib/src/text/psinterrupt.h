// Orderly end of a run that is interrupted from outside.
#pragma once

// From here on SIGINT, SIGTERM and SIGHUP only leave a note, which the run reads
// between two measurements; a second one, a moment later, ends the process at
// once. SIGPIPE and SIGXFSZ are ignored: a closed pipe and a file at its limit
// show as a failed write.
void psCatchInterrupts();

// Leaves the note of a signal that was not sent: SIGPIPE, when nobody reads the
// console any more. The first note stays.
void psNoteInterrupt(int number);

// True once there is a note.
bool psInterrupted();

// The name of the noted signal, "SIGINT"; empty without one.
const char* psInterruptName();

// Ends the process by the noted signal, as the caller of the process expects
// it; returns when none has come.
void psEndIfInterrupted();
