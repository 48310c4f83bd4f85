// What the name of a library function says about it.
#pragma once

#include "pptype.h"
#include "psstring.h"

// The arguments of a function, as a bit set.
enum ppArg { ppArgSrc = 1, ppArgSrc2 = 2, ppArgDst = 4, ppArgDst2 = 8 };

// A function name such as "zmoiCanny_16s8u_C1R": prefix "zmoi" or "zmos", base
// name, one to three type tokens written together, descriptor of channel tokens
// and flag letters. Whatever a name lacks is empty, 0 or false.
class ppFunc : public psString {
  public:
    using psString::psString;
    ppFunc() = default;
    ppFunc(const psString& name) : psString(name) {}

    void parseFunction(psString& base, psString& types, psString& descr) const;
    // A function of one type has it three times, of two the second one twice.
    void parseFunction(psString& base, psString& t1, psString& t2, psString& t3,
                       psString& descr) const;
    psString prefix() const;
    psString baseName() const;
    psString typeName() const;
    psString descrName() const;

    // n = 0: the type that the base name holds, else the first token; n = 1..3:
    // the token; else 0. A function of three types has its first destination in
    // token 2, whatever dstType() says.
    ppType type(int n) const;
    ppType type(ppArg arg) const;
    ppType srcType() const { return type(ppArgSrc); }
    ppType src2Type() const { return type(ppArgSrc2); }
    ppType dstType() const { return type(ppArgDst); }
    ppType dst2Type() const { return type(ppArgDst2); }
    void getTypes(ppType& src, ppType& src2, ppType& dst, ppType& dst2) const;
    ppType typeFromBase() const;
    static psString typeToString(ppType type);
    static ppType stringToType(const psString& text);
    static int zmoType(ppType type);

    // Channel tokens: 1 is the source, 2 the destination.
    void getChannelsName(psString& src, psString& dst) const;
    psString channelsName(int i) const;
    psString channelsName(ppArg arg) const { return channelsName(side(arg)); }
    psString srcChannelsName() const { return channelsName(1); }
    psString dstChannelsName() const { return channelsName(2); }
    void getChannels(int& src, int& dst) const;
    int channels(int i) const;
    int channels(ppArg arg) const { return channels(side(arg)); }
    int srcChannels() const { return channels(1); }
    int dstChannels() const { return channels(2); }
    int zmoChannels(int i) const;

    bool inplace() const { return descrName().contains("I"); }
    bool mask() const { return descrName().contains("M"); }
    bool scale() const { return descrName().contains("Sfs"); }
    bool roi() const { return descrName().contains("R"); }
    bool plane(int i) const;
    void getPlanes(bool& src, bool& dst) const;
    bool alpha(int i) const { return channelsName(i).startsWith("A"); }
    void getAlpha(bool& src, bool& dst) const;
    bool coi() const;  // channel of interest

    // The order of functions in lists: prefix and base, types, descriptor.
    int compare(const ppFunc& other) const;
    static int compareTypes(const psString& a, const psString& b);
    static int compareDescr(const psString& a, const psString& b);

    // The length of the type token that the text begins with, or 0.
    static int lenOfType(const psString& text);

    // What the grammar gets wrong for special names.
    virtual void updateTypes(ppType& src, ppType& src2, ppType& dst, ppType& dst2) const;
    virtual void updateChannels(int& src, int& dst) const;
    virtual void updatePlanes(bool& src, bool& dst) const;

  private:
    static int side(ppArg arg) { return (arg & (ppArgSrc | ppArgSrc2)) != 0 ? 1 : 2; }
    static void firstChanStr(psString& out, psString& rest);
};
