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
    // False after a fatal file error.
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

    // Bits of the ask mode: what the console is asked for. With askAll the tests
    // ask for their own parameters, too.
    enum Ask { askTiming = 1, askParams = 2, askMisalign = 4, askAll = 8 };
    static constexpr int runMode = 100;  // enumMode of a run that measures

    // The registered keys, in registration order; owned by the session. The key
    // is the first character of a one-letter text.
    void initOption(const char* key, const psString& help, psOption::Info info,
                    psOption::Apply apply, const psString& description, bool hidden = false);
    psOption* getOption(char key) const;  // null when no such key is registered
    const psOptionList& options() const { return m_options; }
    // Adds the key's echo to the options line and lets it act.
    void applyOption(char key, const psString& arg);
    // Lines that stand behind the options block: what of the keys had no effect.
    void remarkOption(const psString& line) { m_optionRemarks.push_back(line); }

    // For the apply functions of the keys.
    void addAskMode(int mode) { m_askMode |= mode; }
    void setBatMode(bool on) { m_batMode = on; }
    void setQuickMode(bool noSort) { m_noSort = noSort; }
    void setEnumMode(int mode) { m_enumMode = mode; }
    void addLevelMode(OutputLevel level) { m_levelMode |= level; }
    void setIniMode(const psString& path, bool write);
    void addCondition(RunCondition* condition);  // takes it over; null adds nothing
    void logicCondition(int logic);
    void unopenedFile() { m_unopened = true; }
    void setSignalName(const psString& path) { m_signalName = path; }
    // -h and -?: psShortHelp, 'h' or '?' for all of it, or a key.
    void setHelp(char arg, bool hideHidden);
    void setVersion() { m_version = true; }                                 // -v
    void setCpuFeatures(unsigned long long mask) { m_cpuFeatures = mask; }  // -T; 0: none
    void addFeatureText(const psString& text) { m_featureText += text; }

    int askMode() const { return m_askMode; }
    bool batMode() const { return m_batMode; }
    bool noSort() const { return m_noSort; }
    int enumMode() const { return m_enumMode; }
    OutputLevel levelMode() const { return m_levelMode; }
    bool unopened() const { return m_unopened; }
    const psString& iniName() const { return m_iniName; }
    bool iniWrite() const { return m_iniWrite; }
    const psString& signalName() const { return m_signalName; }
    const psString& optionsLine() const { return m_optionsLine; }
    unsigned long long cpuFeatures() const { return m_cpuFeatures; }
    psConditions* conditions() const { return m_conditions.get(); }

    // The exit level is 1 with -e, 2 with -h or -?, 3 with -v, else 0.
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
    // Product, version and build date in one line.
    static psString banner();

    // False until the keys have been applied and the run goes on to measure or
    // to enumerate. A registered environment function is called three times:
    // while this is false, when it must neither open the measured library nor
    // write (-h and -v end there); once to open it and to name what is missing;
    // and after the library's initialisation, to bind again.
    static bool libraryWanted() { return m_libraryWanted; }

    static psString& m_exePath;  // argv[0]
    static psString m_inDir;
    static psString m_outDir;
    static psString m_defName;
    static int m_exitLevel;
    static int& m_nameMode;
    static bool& m_nameExit;

  protected:
    // The three dialogues of readCommonData(); each returns whether it asked.
    virtual bool readTimingMethod();
    virtual bool readTestParameters();
    virtual bool readDataOffset();

  private:
    void resetKeys();
    void applyKeys();
    void printOptions();
    void readKeys(int argc, char** argv);
    bool readCfgFile(psString& line, psString& path);
    void setExitLevel();
    void setDefaults();
    bool openIniFile();
    bool hintOutput();
    void addCpuTest();
    void initLibrary();
    int runSession();
    int runTests();
    void selectCommonParms();
    void closeFiles();
    void destroyTests();

    std::unique_ptr<psConditions> m_conditions;
    psOptionList m_options;
    std::unique_ptr<psCommandList> m_commandList;
    int m_askMode = 0;
    bool m_batMode = false;
    OutputLevel m_levelMode = 1;
    bool m_noSort = false;
    int m_enumMode = runMode;
    bool m_unopened = false;
    psString m_iniName;
    bool m_iniWrite = false;
    psString m_optionsLine;
    psStringList m_optionRemarks;
    psString m_signalName;
    char m_helpArg = '\0';
    bool m_hideHidden = true;
    bool m_version = false;
    unsigned long long m_cpuFeatures = 0;
    psString m_featureText;  // what -T did not understand; told once the library is set up

    static bool m_libraryWanted;
    static bool m_optionFile;
};
