// The words of a command line as a list of keys with their arguments.
#pragma once

#include "pslist.h"
#include "psstring.h"

// One key; a blank is the mark behind the last one.
class psCommandKey {
  public:
    // Reads a key word: the character behind '-' or '/' is the key, the rest the
    // argument. A word that is only a key, or a key and one of the signs + - =,
    // takes the separate argument behind the sign; any other drops it. A long key
    // --name=value is the key '-'; a separate argument in place of its value is kept
    // behind a blank, so that it can be refused. False, and nothing changed, for a word
    // that is no key word.
    bool setArg(const psString& word, const psString& separateArg);
    // False when this is another key.
    bool getArg(char key, psString& arg) const;

    char key() const { return m_key; }
    const psString& arg() const { return m_arg; }
    bool fromFile() const { return m_fromFile; }
    void setFromFile(bool on) { m_fromFile = on; }

    // At least two characters that begin with '-' or '/'.
    static bool isKeyWord(const psString& word);
    // Of a key word: that it keeps a separate argument.
    static bool takesNextWord(const psString& word);

  private:
    char m_key = ' ';
    psString m_arg;
    bool m_fromFile = false;  // an option file's
};

// Keys in command-line order, followed by one end mark.
class psCommandList : public psList<psCommandKey> {
  public:
    psCommandList();

    // The keys are appended. A text is cut at blanks, tabs, line ends, double
    // quotes and semicolons: quotes do not group.
    void setArgs(int count, char** words);  // argv without argv[0]
    void setArgs(const char* text);
    void setArgs(const psStringList& words);
    void setArg(const psString& word, const psString& arg);
    void setArg(char key, const psString& arg);

    // The keys go before `position`. A word is given the next one as separate
    // argument unless that is a key word itself. Words that come to nothing so are
    // dropped, and named by remarks().
    void insertArgs(const char* text, iterator position);
    void insertArgs(const psStringList& words, iterator position);
    void insertArg(const psString& word, const psString& separateArg, iterator position);

    // Takes the keys of main's arguments; without any those of the configuration file
    // <title of the program>.cfg, else those of the command line that is compiled in.
    // Returns what the echo of the keys begins with.
    psString readKeys(int argc, char** argv);

    // Inserts the keys of an option file, all its lines joined; false, and a
    // message, when it cannot be read. The name is taken as given. A NUL byte ends
    // the text of its line.
    bool insertFromFile(const psString& file, iterator position);

    // Puts the keys of every -@ file in its place; keys that came from a file
    // are not searched again. False when one could not be read.
    bool expandFiles();

    int exitLevel() const;  // psSettings::exitLevel
    bool isKey(char key) const;
    bool getArg(char key, psString& arg) const;  // of the last entry with the key

    // A line for each part of what was given that is in no key.
    const psStringList& remarks() const { return m_remarks; }

  private:
    iterator endMark();
    void remarkLost(const psString& word, const psString& behind);
    bool readFile(const psString& file, psString& text);
    bool readCfgFile(psString& line, psString& path);

    psStringList m_remarks;
    bool m_fromFile = false;
};

// The list of the current run, owned by the session; null before its keys are read.
extern psCommandList* pCmdList;
