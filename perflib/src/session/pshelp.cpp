#include "pshelp.h"

#include <algorithm>

namespace {

// Keys that take a file tell to glue the path to the key, since a word that
// begins with '/' is a key itself.
constexpr psKeyText keyTexts[] = {
    {'B', false, "-B               = batch mode (no console input)\n",
     R"(  Nothing is asked: a value comes from -d, from the ini-file (-i), or is the
  default. -B wins over -A, in whatever order they stand.
  With neither -B nor -A the console is asked as with -ATimingParams.
  Example: pscv -B -fCanny -r
)"},
    {'A', false, "-A<Timing|Params|Misalign|All> = set detail level of the console input\n",
     R"(  Timing: the timing method; Params: the common parameters of the tests;
  Misalign: the offset of the test data; All: these three, and then every test
  asks for its own parameters. Only the capital letters T, P and M are looked
  at; without any of them (-A alone, too) it is All. Several -A keys combine;
  -B wins over -A. What -d or the ini-file gives is not asked.
  Example: pscv -ATiming -AMisalign -fCanny
)"},
    {'d', false, "-d<name>=<value> = set PS parameter value\n",
     R"(  Data set by -d option has the highest priority: it goes before the ini-file,
  the console and the default, in every test that has the parameter; -I lists
  all names with their values. The name is taken exactly as spelt, blanks around
  name and value are dropped. The key may be repeated; of equal names the last
  wins; names that nothing asked for are told at the end of the run. A value
  that is refused is told with a valid form, and what was before stays.
  A parameter of sizes or numbers takes a list ("1;2;4") or first, last and
  step ("64;1024;*2"). ';' and blanks end a word in option files, in the
  configuration file and in the shell: quote such a value, on the command line.
  Method=Auto|Manual|Statistic|Iterative is the timing method; its values are
  NumLoops (Manual), NumCalls and TotalCpuClocks (Statistic), StartNumLoops,
  StopNumLoops and MinCpuClocks (Iterative), and "Accuracy, %".
  Picture=<file.bmp> takes the source images from a BMP file in the -p
  directory. 8 bits a pixel are recommended: the rows of 24- and 32-bit files
  arrive skewed unless a row of the file is as long as the aligned step of the
  image (a multiple of 64 bytes).
  Example: pscv -B -fCanny "-dImageSize=640x480" -dMethod=Manual -dNumLoops=20
)"},
    {'i', false, "-i[<file-name>]  = read PS parameters from ini-file\n",
     R"(  Default file: <directory of -p>/<title of -n>.ini. A name without a dot gets
  ".ini", a relative one lies in the directory of -p. The last of all -i and -I
  keys wins. A file that cannot be read is named, and the run goes on without.
  Ini-file section [<func-name>] contains parameters for measurement of this
  function and [Perf System] the common ones. A parameter read from the ini-file
  will not be asked from console; -d goes before the file.
  Glue the path to the key: in "-i /data/x.ini" the second word is a key.
  Example: pscv -B -i/data/canny.ini
)"},
    {'I', false, "-I[<file-name>]  = write PS parameters to ini-file and exit\n",
     R"(  Writes the parameters of all selected tests, their valid values as comment.
  If the parameter is already present in ini-file then PS doesn't overwrite it.
  Nothing is measured.
  Default file: <directory of -p>/<title of -n>.ini; the last of all -i and -I
  keys wins. A file that cannot be written ends the run before any test, and so
  does one that is no ini-file (a NUL byte, text without a line [section]),
  which stays as it is. Then run with -i.
  Glue the path to the key: in "-I /data/x.ini" the second word is a key.
  Example: pscv -B -fCanny -I/data/canny.ini
)"},
    {'P', false, "-P               = read tested function names from ini-file\n",
     R"(  Only functions that have a section of their own in the ini-file run; the
  others are not counted in the summary. -f, -t and -m select as well.
  Without -i the key has no effect.
  Example: pscv -B -icanny -P
)"},
    {'o', false, "-o[<file-name>]  = create txt-file and write console output\n",
     R"(  Default file: <directory of -l>/<title of -n>.txt. A name without a dot gets
  ".txt", a relative one lies in the directory of -l. Every -o and -O opens a
  file more, all get the same text; -L sets its detail. A file that cannot be
  opened ends the run before any test.
  Glue the path to the key: in "-o /data/x" the second word is a key.
  Example: pscv -B -fCanny -LINFO -o/data/canny.txt
)"},
    {'O', false, "-O[<file-name>]  = add console output to txt-file\n",
     R"(  As -o, but an existing file is kept and written on at its end.
  Default file: <directory of -l>/<title of -n>.txt; every -o and -O key counts.
  Glue the path to the key: in "-O /data/x" the second word is a key.
  Example: pscv -B -fCanny -O/data/all.txt
)"},
    {'L', false, "-L<ERR|WARN|PERF|INFO|TRACE|DATA> = set detail level of the console output\n",
     R"(  ERR  : output errors (the default)
  WARN : output errors & warnings
  PERF : output errors & warnings & performance for each parameter set
  INFO : as PERF, and detailed course of performance measurement
  TRACE: as PERF, and PS function call tracing
  DATA : as PERF, and vectors data before and after the library call
  Every capital letter of E, W, P, I, T and D counts by itself, so that -LDATA
  traces, too; M, as PERF, and the allocation of memory.
  If several -L keys present in command line then all modes are combined.
  Warnings that are not shown do not make a test's result worse.
  Example: pscv -B -fCanny -LP
)"},
    {'J', false, "-J[<min-loops>]  = number of external measurement loops\n",
     R"(  A whole number from 1 on; anything else is ignored. The last valid -J wins.
  The number is stored and shown; none of the four timing methods reads it.
  Example: pscv -B -J4
)"},
    {'r', false, "-r[<file-name>]  = create csv-file and write PS results\n",
     R"(  One row for each parameter set, written as soon as the set is measured.
  Default file: <directory of -l>/<title of -n>.csv. A name without a dot gets
  ".csv", a relative one lies in the directory of -l. Every -r and -R opens a
  file more. A file that cannot be opened ends the run before any test.
  Glue the path to the key: in "-r /data/x" the second word is a key.
  Example: pscv -B -fCanny -r/data/canny.csv
)"},
    {'R', false, "-R[<file-name>]  = add PS results to csv-file\n",
     R"(  As -r, but an existing file is kept and written on at its end, titles
  included. Default file: <directory of -l>/<title of -n>.csv; every key counts.
  Glue the path to the key: in "-R /data/x" the second word is a key.
  Example: pscv -B -fCanny -R/data/all.csv
)"},
    {'q', false,
     "-q[<file-name>]  = create csv-file (*_name.csv is default) and write function parameter name "
     "lines\n"
     "-q+              = add function parameter name lines to PS results table file\n",
     R"(  The names of the parameters stand in the columns that their values have in
  the table of -r. Default file: <directory of -l>/<title of -n>_name.csv; a
  name without a dot gets "_name.csv". Every -q opens a file more, and -q+ may
  stand beside them; -q+ is ignored without -r or -R.
  Glue the path to the key: in "-q /data/x" the second word is a key.
  Example: pscv -B -q/data/names.csv -Q
)"},
    {'Q', false, "-Q               = exit after function parameter name table creation\n",
     R"(  Every selected test writes its line of names and is not measured. Ignored
  without -q. The tests count as undefined in the summary.
  Example: pscv -B -fCanny -q -Q
)"},
    {'u', false,
     "-u[<file-name>]  = create csv-file and write summary table ('_sum' is added to default title "
     "name)\n",
     R"(  Machine and library, a line of eleven fields for each test, the counts.
  Comment lines begin with "--". Default file: <directory of -l>/<title of
  -n>_sum.csv; a name without a dot gets "_sum.csv", a relative one lies in the
  directory of -l. Every -u and -U opens a file more.
  Glue the path to the key: in "-u /data/x" the second word is a key.
  Example: pscv -B -u/data/sum.csv
)"},
    {'U', false,
     "-U[<file-name>]  = add summary table to csv-file ('_sum' is added to default title name)\n",
     R"(  As -u, but an existing file is kept and written on at its end.
  Default file: <directory of -l>/<title of -n>_sum.csv; every -u and -U counts.
  Glue the path to the key: in "-U /data/x" the second word is a key.
  Example: pscv -B -U/data/all_sum.csv
)"},
    {'g', false, "-g[<file-name>]  = create signal file at the end of the whole testing\n",
     R"(  Tells a script that the run has finished: it holds the time that was needed
  and the time of the end, and is written last. The last -g wins.
  Default file: <directory of -l>/<title of -n>.end; a name without a dot gets
  ".end", a relative one lies in the directory of -l.
  Glue the path to the key: in "-g /data/x" the second word is a key.
  Example: pscv -B -r -g/data/done.end
)"},
    {'n', false, "-n<title-name>   = default title name for ini-file and output files\n",
     R"(  The name of every file whose key names none, before its extension. Without
  -n it is the name of the program. The last -n wins and acts on all keys, also
  on those before it; in an option file (-@) it does not act.
  Example: pscv -B -fCanny -ncanny -r -o
)"},
    {'p', false,
     "-p<dir-name>     = default directory for input files i.e. ini & test data files\n",
     R"(  Where the ini-file and the pictures lie. Default: the directory by which the
  program was called ("build/release/" of build/release/pscv), the working
  directory when PATH found it; a relative name starts there, too. The last -p
  wins and acts on all keys, also on those before it; in an option file (-@) it
  does not act.
  Glue the path to the key: in "-p /data" the second word is a key.
  Example: pscv -B -p/data/in -icanny
)"},
    {'l', false, "-l<dir-name>     = default directory for output files (listings)\n",
     R"(  Where -o, -O, -r, -R, -q, -u, -U and -g put files with a relative name or
  none. Default: the directory by which the program was called, the working
  directory when PATH found it; a relative name starts there, too. The last -l
  wins and acts on all keys, also on those before it; in an option file (-@) it
  does not act.
  Glue the path to the key: in "-l /data" the second word is a key.
  Example: pscv -B -l/data/out -r -o
)"},
    {'f', false,
     "-f < or-pattern> = run tests for functions with pattern in name\n"
     "-f-<not-pattern> = don't run tests for functions with pattern in name\n"
     "-f+<and-pattern> = run only tests for functions with pattern in name\n"
     "-f=<func-name>   = run tests for the function with exactly this name\n",
     R"(  Repeat the key at will: a function is tested when its name is one of the -f=
  names, or holds at least one of the -f patterns (if there are any), all -f+
  and none of the -f- patterns. Capital and small letters differ. A pattern that
  fits no name is told at the end of the run.
  -k tells how -f, -t and -m work together.
  Example: pscv -B -fCanny -fSobel -f-32f
)"},
    {'t', false, "-t[-|+|=]<patrn> = run (don't run) tests with pattern in test name\n",
     R"(  The name is that of the test class, as the box of each test and -e show it.
  Signs and repetition as with -f; -k tells how -f, -t and -m work together.
  Example: pscv -B -t=TimcCanny
)"},
    {'m', false,
     "-m[-|+|=]<patrn> = run (don't run) tests registered in file with pattern in file name\n",
     R"(  The name is that of the module's source without directory and extension, as
  the box of each test and -e show it. Signs and repetition as with -f; -k
  tells how -f, -t and -m work together.
  Example: pscv -B -m=p_ccanny
)"},
    {'k', false, "-k<and|or>       = compose different keys (-f,-t,-m) by logical operation\n",
     R"(  Default is "and": a test runs when all of the three kinds of keys that are
  given select it; with "or" one of them is enough. Only a small 'o' at the
  beginning means "or". The last -k wins; conditions of one kind are combined as
  -f tells.
  Example: pscv -B -fCanny -tTimcFlood -kor
)"},
    {'F', false, "-F<func-name>    = start testing from function with func-name full name\n",
     R"(  The selected tests before the first whose function name contains the text are
  passed over, in the order of the run (see -s). A name that does not occur
  among the selected tests runs nothing. The last -F wins.
  Example: pscv -B -r -FzmoiCanny_16s8u_C1R
)"},
    {'Y', false, "-Y<HIGH|NORMAL>  = set high or normal process prioritY (normal is default)\n",
     R"(  The priority during the measured calls only; before and after them it is as
  the process had it. Just the first letter counts, a capital; L sets a low
  priority. Acts for the superuser only. The last valid -Y wins; without -Y
  the priority is left alone.
  Example: pscv -B -fCanny -YHIGH
)"},
    {'H', false,
     "-H[ONLY]         = add 'Interest' column to table file [and run only hot tests]\n",
     R"(  Hot functions are those whose speed matters most. They have "Hot" in the last
  column of the table of -r; with -HONLY (or -HO) only they run, of the tests
  that the other keys select. The last -H wins.
  Example: pscv -B -HONLY -r
)"},
    {'W', false, "-W= unmask floating-point exceptions\n",
     R"(  Every floating-point exception but "inexact" traps in the measured calls, x87
  and SSE. A function that raises one ends its test as EXCPTFAIL with a message.
  Example: pscv -B -fCanny -W
)"},
    {'T', false, "-T[<cpu-features>]   = call zmoSetCpuFeatures( cpuFeatures )\n",
     "  Runs the best code path of the library within the processor features given.\n"
     "  They are labels separated by ',' or '|', exactly as spelt, of instruction sets\n"
     "  or code paths (P_ before a code path changes nothing); unknown ones are named\n"
     "  and add nothing. The last valid -T wins. If the library refuses (the processor\n"
     "  lacks a feature) its status and what the processor has are shown, and the path\n"
     "  of its own choice serves, as without -T. The code paths:\n"
     "\t"
     "  Example: pscv -B -fCanny -TAVX2\n"},
    {'S', true, "-SU              = measure functions with data set & use\n",
     R"(  All test data are put back before each measured call, inside the measured
  time. For functions that change the data they read.
  Example: pscv -B -fFloodFill -SU
)"},
    {'C', true,
     "-C               = run tests with data in cache and out of cache (if that is supported by "
     "test)\n",
     R"(  Tests that have no such parameter say so and are not measured.
  Example: pscv -B -fCanny -C
)"},
    {'s', false, "-s[-]            = sort or don't sort functions (sort mode is default)\n",
     R"(  With -s- the tests run in the order in which the modules were linked. The last
  key wins, except that a plain -s does not take back an earlier -s-.
  Example: pscv -B -s- -e
)"},
    {'e', false, "-e               = enumerate tests and exit\n",
     R"(  -e lists the tests that -f, -t, -m, -k and -H select, -e+ the functions of the
  library with a mark at those that a selected test measures, -e- the functions
  that none measures. The list goes to the console and to the files of -r.
  Nothing is measured; the last -e wins.
  Example: pscv -e -fCanny
)"},
    {'v', false, "-v               = type the version number of the Performance System and exit\n",
     R"(  Nothing is measured. Together with -e the version is typed and no test is
  listed; with -h the help follows. --version does the same.
  Example: pscv -v
)"},
    {'@', false, "-@<file-name>    = read command line options from specified file\n",
     R"(  The keys of the file act where the -@ stands; the key may be repeated. A
  relative name starts in the working directory, no extension is added; a file
  that cannot be read ends the run. Blanks, tabs, line ends, ';' and '"' divide
  words, and quotes hold nothing together: values and paths with blanks or ';'
  are for the ini-file or the command line. A NUL byte ends its line. In the
  file -p, -l and -n do not act, -e, -h and -v do without the other keys' echo
  telling so, and a -@ is ignored.
  Without any key on the command line the first line of <title>.cfg is read, in
  the working directory or else beside the program.
  Glue the path to the key: in "-@ /data/x" the second word is a key.
  Example: pscv -@/data/nightly.opt -ncanny
)"},
    {'h', false,
     "-h               = type short help and exit\n"
     "-hh              = type extended help and exit\n"
     "-h<key>          = type extended help for the key and exit\n",
     R"(  The last of all -h and -? keys wins. Files named by other keys are opened all
  the same, but nothing is measured. --help does the same as -h.
  Example: pscv -hL
)"},
    {'c', false, "-c[<num-ms>]     = set min number of ms for 1 measurement\n",
     R"(  A whole number from 1 on; anything else is ignored. The last valid -c wins.
  Default 100. The Auto method spends a tenth of that time on one measurement.
  Example: pscv -B -fCanny -c500
)"},
    {'j', false, "-j[<min-loops>]  = minimal number of measurement loops\n",
     R"(  A whole number from 1 on; anything else is ignored. The last valid -j wins.
  Default 8: at least that many calls are measured, however long they take.
  Example: pscv -B -fCanny -j3
)"},
    {'?', false,
     "-?               = type short help with hidden keys and exit\n"
     "-??              = type extended help with hidden keys and exit\n"
     "-?<key>          = type extended help for the key and exit\n"
     "-h?              = type extended help for this key and exit\n",
     R"(  As -h, with the keys that only developers use. The last of all -h and -? keys
  wins. In most shells the key has to be quoted.
  Example: pscv "-??"
)"},
};

const char* hiddenNote(bool hideHidden) {
    return hideHidden ? "\n" : " with hidden keys\n";
}

}  // namespace

const psKeyText& psTextOfKey(char key) {
    static constexpr psKeyText none;
    const auto* found = std::ranges::find(keyTexts, key, &psKeyText::key);
    return found == std::end(keyTexts) ? none : *found;
}

psString psBanner() {
    return psString("Morva ZMO Performance System 2.0, ") + __DATE__;
}

psString psQuickHelp(const psOptionList& options, bool hideHidden) {
    psString text = psString("QUICK HELP") + hiddenNote(hideHidden);
    for (const psOption* option : options) {
        if (!(option->hidden && hideHidden)) text += option->help;
    }
    return text;
}

psString psFullHelp(const psOptionList& options, bool hideHidden) {
    psString text = psString("EXTENDED HELP") + hiddenNote(hideHidden);
    for (const psOption* option : options) {
        if (option->help.empty() || (option->hidden && hideHidden)) continue;
        text += "\n" + option->help;
        if (option->hidden) text += "This is hidden key used by developers only\n";
        text += option->description;
    }
    return text;
}

psString psKeyHelp(const psOptionList& options, char key) {
    const psString title("EXTENDED KEY HELP\n");
    const psOption* option = psFindOption(options, key);
    if (!option) return title + "Key -" + psString(key) + " is not valid\n";
    if (option->help.empty()) return title + "Key -" + psString(key) + " is deprecated\n";
    const psString description = option->description.empty()
                                     ? psString("No extended description for this key\n")
                                     : option->description;
    return title + option->help + description;
}
