// The session: reads the keys and drives one run from the header to the signal
// file. Umbrella header of the framework.
#pragma once

#include <memory>

#include "psbase.h"
#include "pscond.h"
#include "psctable.h"
#include "pshelp.h"
#include "pslist.h"
#include "psoption.h"
#include "pssettings.h"
#include "psstream.h"
#include "psstring.h"

class psCommandList;
class psSession;

// The session of this process, set before main by psRegSession() or by main.
extern psSession* pSession;
bool psRegSession(psSession* session);  // not owned

class psSession {
  public:
    // Constructed before main as well: stores nothing but initial values.
    psSession();
    psSession(const psSession&) = delete;
    psSession& operator=(const psSession&) = delete;
    virtual ~psSession();

    virtual void initSession();
    // 1 when a test failed, else 0.
    virtual int run(int argc, char** argv);
    // The words of the table's title line: functions, parameters, results.
    virtual void funcTitleToCStream();
    virtual void parmsTitleToCStream();
    virtual void resultTitleToCStream();
    virtual void putTableTitle();
    virtual void putTableTitleLine();
    // Called after the keys have been applied; false ends the run.
    virtual bool startSession();
    virtual void updateOptions();
    // False when nothing is to be run: after a fatal error, --help and --version.
    virtual bool parseCommandLine(int argc, char** argv);
    virtual void listTests(int mode);
    virtual void hint(char arg, bool hideHidden);
    virtual void hint_quick(bool hideHidden);
    virtual void hint_full(bool hideHidden);
    virtual void hint_descr(char key);
    virtual void outputHeader();
    virtual void outputFooter();
    virtual void outputSignal();
    virtual void readCommonData();

    // The registered keys, in registration order; owned by the session. The key
    // is the first character of a one-letter text.
    void initOption(const char* key, const psString& help, psOption::Info info,
                    psOption::Apply apply, const psString& description, bool hidden = false);
    psOption* getOption(char key) const;  // null when no such key is registered
    const psOptionList& options() const { return m_options; }
    // The same of the long keys, which are found by their names.
    void initName(const psOption& option);
    const psOptionList& names() const { return m_names; }
    // Adds the key's echo to the options line and lets it act on the settings.
    void applyOption(char key, const psString& arg);

    // As the keys have left them so far; g_settings once all have been applied.
    const psSettings& settings() const { return m_settings; }
    const psString& optionsLine() const { return m_optionsLine; }
    psConditions* conditions() const { return m_conditions.get(); }

    static bool isExit(int level) { return m_exitLevel >= level; }
    static psString getExitInfo();
    // True while a key of an option file is applied.
    static bool isOptionFile() { return m_optionFile; }

    // Absolute names stay as they are; names without a dot get the extension;
    // an empty name is the default title with the extension. All directories
    // end with a separator, except the empty one, which is the working directory.
    static bool isAbsolutePath(const psString& path);
    static psString genDirName(const psString& dir);
    static psString genPathName(const psString& dir, const psString& name, const psString& ext);
    static psString genInPath(const psString& name, const psString& ext);
    static psString genOutPath(const psString& name, const psString& ext);
    static psString getInPath() { return m_inDir; }
    static psString getOutPath() { return m_outDir; }
    static psString setInDir(const psString& dir);
    static psString setOutDir(const psString& dir);
    static psString setDefName(const psString& name);

    // A title framed by stars, 80 columns wide.
    static psString getEnterTitle(const psString& text);

    // False until the keys have been applied and the run goes on to measure or
    // to enumerate. A registered environment function is called three times:
    // while this is false, when it must neither open the measured library nor
    // write (-h and -v end there); once to open it and to name what is missing;
    // and after the library's initialisation, to bind again.
    static bool libraryWanted() { return m_libraryWanted; }

    static constexpr const psString& m_exePath = g_settings.exePath;
    static constexpr const psString& m_inDir = g_settings.inDir;
    static constexpr const psString& m_outDir = g_settings.outDir;
    static constexpr const psString& m_defName = g_settings.defName;
    static constexpr const int& m_exitLevel = g_settings.exitLevel;
    static constexpr const int& m_nameMode = g_settings.nameMode;
    static constexpr const bool& m_nameExit = g_settings.nameExit;

  protected:
    // The three dialogues of readCommonData(); each returns whether it asked.
    virtual bool readTimingMethod();
    virtual bool readTestParameters();
    virtual bool readDataOffset();

  private:
    void applyKeys();
    void applyName(const psString& arg);
    void echo(const psString& text);
    void printOptions();
    void setDefaults();
    void useSettings();
    bool listOutput();
    bool hintOutput();
    bool bindToCore();
    void initLibrary();
    int runSession();
    int runTests();

    std::unique_ptr<psConditions> m_conditions;
    psOptionList m_options;
    psOptionList m_names;
    std::unique_ptr<psCommandList> m_commandList;
    psSettings m_settings;
    psString m_optionsLine;
    psStringList m_optionRemarks;  // what of the keys had no effect; behind the options block

    static bool m_libraryWanted;
    static bool m_optionFile;
};
