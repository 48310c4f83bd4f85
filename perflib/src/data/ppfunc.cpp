#include "ppfunc.h"

#include <algorithm>
#include <iterator>

namespace {

// In this order: "64sc" is looked for before the "64s" that it contains.
constexpr const char* baseTypes[] = {"64fc", "64sc", "64s",  "64f", "32fc", "32sc", "32u", "32s",
                                     "32f",  "16sc", "16uc", "16u", "16s",  "8sc",  "8u",  "8s"};

// In the order of the library's codes.
constexpr const char* channelCodes[] = {"C0", "C1", "C2",  "C3",  "C4",   "P2",
                                        "P3", "P4", "AC1", "AC4", "A0C4", "AP4"};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isChannelIndex(char c) {
    return c >= '1' && c <= '4';
}

// True when the text holds a `letter` that no channel number follows. The NUL
// behind the text counts as no number.
bool hasBareLetter(const psString& text, char letter) {
    for (int i = 0; i < text.length(); ++i) {
        if (text[i] == letter && !isChannelIndex(text[i + 1])) return true;
    }
    return false;
}

bool isOneOf(const psString& text, std::initializer_list<const char*> names) {
    return std::ranges::any_of(names, [&](const char* name) { return text == name; });
}

void updateSignalTypes(const psString& name, const psString& base, ppType& src, ppType& src2,
                       ppType& dst, ppType& dst2) {
    if (isOneOf(base, {"Real", "Imag", "Magnitude", "Phase", "CplxToReal", "CartToPolar",
                       "PowerSpectr"})) {
        dst &= ~ppTypeComplex;
        dst2 &= ~ppTypeComplex;
    } else if (base == "PolarToCart") {
        src &= ~ppTypeComplex;
        src2 &= ~ppTypeComplex;
    } else if (base == "RealToCplx" || name.contains("Goertz")) {
        dst |= ppTypeComplex;
        dst2 |= ppTypeComplex;
    } else if (base == "DotProd" && src == src2 && !ppIsComplex(src) && ppIsComplex(dst)) {
        src2 = dst;
    }
    if (name.contains("Mul_16u16s")) src2 = dst;
}

void updateImageTypes(const psString& base, ppType& src2, ppType& dst, ppType& dst2) {
    if (isOneOf(base, {"Sum", "Mean"})) {
        dst = dst2 = pp64f;
    } else if (isOneOf(base, {"Copy", "Set"})) {
        src2 = pp8u;  // the mask
    } else if (base.contains("Compare")) {
        dst = dst2 = pp8u;
    }
}

}  // namespace

int ppFunc::lenOfType(const psString& text) {
    int digits = 0;
    while (isDigit(text[digits])) ++digits;  // ends at the NUL
    const char letter = text[digits];
    if (digits == 0 || (letter != 'u' && letter != 's' && letter != 'f')) return 0;
    return digits + (text[digits + 1] == 'c' ? 2 : 1);
}

psString ppFunc::prefix() const {
    return startsWith("zmos") || startsWith("zmoi") ? substr(0, 4) : psString();
}

void ppFunc::parseFunction(psString& base, psString& types, psString& descr) const {
    const int start = prefix().length();
    base = substr(start);
    types = descr = psString();
    for (int at = find("_"); at >= 0; at = find("_", at + 1)) {
        if (lenOfType(substr(at + 1)) == 0) continue;
        base = substr(start, at - start);
        const int next = find("_", at + 1);
        types = next < 0 ? substr(at + 1) : substr(at + 1, next - at - 1);
        if (next >= 0) descr = substr(next + 1);
        return;
    }
}

void ppFunc::parseFunction(psString& base, psString& t1, psString& t2, psString& t3,
                           psString& descr) const {
    psString types;
    parseFunction(base, types, descr);
    t1 = types.substr(0, lenOfType(types));
    if (t1 == types) {
        t2 = t3 = t1;
        return;
    }
    psString rest = types.substr(t1.length());
    t2 = rest.substr(0, lenOfType(rest));
    if (t2 == rest) {
        t3 = t2;
        return;
    }
    rest = rest.substr(t2.length());
    t3 = rest.substr(0, lenOfType(rest));
}

psString ppFunc::baseName() const {
    psString base, types, descr;
    parseFunction(base, types, descr);
    return base;
}

psString ppFunc::typeName() const {
    psString base, types, descr;
    parseFunction(base, types, descr);
    return types;
}

psString ppFunc::descrName() const {
    psString base, types, descr;
    parseFunction(base, types, descr);
    return descr;
}

ppType ppFunc::type(int n) const {
    psString base, t1, t2, t3, descr;
    parseFunction(base, t1, t2, t3, descr);
    switch (n) {
        case 0: {
            const ppType type = typeFromBase();
            return type ? type : stringToType(t1);
        }
        case 1:
            return stringToType(t1);
        case 2:
            return stringToType(t2);
        case 3:
            return stringToType(t3);
        default:
            return 0;
    }
}

ppType ppFunc::type(ppArg arg) const {
    ppType src, src2, dst, dst2;
    getTypes(src, src2, dst, dst2);
    switch (arg) {
        case ppArgSrc:
            return src;
        case ppArgSrc2:
            return src2;
        case ppArgDst:
            return dst;
        case ppArgDst2:
            return dst2;
    }
    return 0;
}

void ppFunc::getTypes(ppType& src, ppType& src2, ppType& dst, ppType& dst2) const {
    psString base, t1, t2, t3, descr;
    parseFunction(base, t1, t2, t3, descr);
    src = stringToType(t1);
    dst = dst2 = stringToType(t3);
    src2 = t2 == t3 ? src : stringToType(t2);
    updateTypes(src, src2, dst, dst2);
}

ppType ppFunc::typeFromBase() const {
    const psString base = baseName();
    const auto* found =
        std::ranges::find_if(baseTypes, [&](const char* text) { return base.contains(text); });
    return found == std::end(baseTypes) ? 0 : stringToType(*found);
}

psString ppFunc::typeToString(ppType type) {
    return ppInfo(type).name;
}

ppType ppFunc::stringToType(const psString& text) {
    if (text == "1u") return pp8u;
    const auto* found =
        std::ranges::find_if(ppTypes, [&](const ppTypeInfo& info) { return text == info.name; });
    return found == ppTypes.end() ? 0 : found->code;
}

int ppFunc::zmoType(ppType type) {
    return ppInfo(type).zmoCode;
}

void ppFunc::firstChanStr(psString& out, psString& rest) {
    const int c = rest.find("C");
    const int p = rest.find("P");
    const int at = p >= 0 && (c < 0 || p < c) ? p : c;
    if (at < 0 || !isChannelIndex(rest[at + 1])) {
        out = rest = psString();
        return;
    }
    const int start = at > 0 && rest[at - 1] == 'A' ? at - 1 : at;
    out = rest.substr(start, at + 2 - start);
    rest = rest.substr(at + 2);
    // A trailing planar mark makes the token planar.
    if (hasBareLetter(rest, 'P')) out[at - start] = 'P';
}

void ppFunc::getChannelsName(psString& src, psString& dst) const {
    psString rest = descrName();
    firstChanStr(src, rest);
    firstChanStr(dst, rest);
    if (dst.empty()) dst = src;
}

psString ppFunc::channelsName(int i) const {
    psString src, dst;
    getChannelsName(src, dst);
    if (i == 1) return src;
    return i == 2 ? dst : psString();
}

void ppFunc::getChannels(int& src, int& dst) const {
    psString names[2];
    getChannelsName(names[0], names[1]);
    int counts[2];
    for (int i = 0; i < 2; ++i) {
        const char digit = names[i][names[i].startsWith("A") ? 2 : 1];
        counts[i] = isChannelIndex(digit) ? digit - '0' : 0;
    }
    src = counts[0];
    dst = counts[1];
    updateChannels(src, dst);
}

int ppFunc::channels(int i) const {
    int src, dst;
    getChannels(src, dst);
    if (i == 1) return src;
    return i == 2 ? dst : 1;
}

int ppFunc::zmoChannels(int i) const {
    const psString name = channelsName(i);
    const auto* found =
        std::ranges::find_if(channelCodes, [&](const char* code) { return name == code; });
    return found == std::end(channelCodes)
               ? 0
               : static_cast<int>(std::distance(std::begin(channelCodes), found));
}

bool ppFunc::plane(int i) const {
    const psString name = channelsName(i);
    return name.startsWith("P") || name.startsWith("AP");
}

void ppFunc::getPlanes(bool& src, bool& dst) const {
    const psString descr = descrName();
    const int c = descr.find("C");
    const int p = descr.find("P");
    src = p >= 0 && (c < 0 || p < c);
    dst = p >= 0 && (c < 0 || c < p);
    updatePlanes(src, dst);
}

void ppFunc::getAlpha(bool& src, bool& dst) const {
    src = alpha(1);
    dst = alpha(2);
}

bool ppFunc::coi() const {
    return hasBareLetter(descrName(), 'C');
}

void ppFunc::updateTypes(ppType& src, ppType& src2, ppType& dst, ppType& dst2) const {
    const psString family = prefix();
    if (family == "zmos") updateSignalTypes(*this, baseName(), src, src2, dst, dst2);
    if (family == "zmoi") updateImageTypes(baseName(), src2, dst, dst2);
}

void ppFunc::updateChannels(int& /*src*/, int& /*dst*/) const {}

void ppFunc::updatePlanes(bool& /*src*/, bool& /*dst*/) const {}

int ppFunc::compare(const ppFunc& other) const {
    psString base, types, descr, otherBase, otherTypes, otherDescr;
    parseFunction(base, types, descr);
    other.parseFunction(otherBase, otherTypes, otherDescr);
    if (const int c = (prefix() + base).compare(other.prefix() + otherBase)) return c;
    if (const int c = compareTypes(types, otherTypes)) return c;
    return compareDescr(descr, otherDescr);
}

int ppFunc::compareTypes(const psString& a, const psString& b) {
    psString restA = a, restB = b;
    for (int round = 0; round < 3; ++round) {
        const int lenA = lenOfType(restA), lenB = lenOfType(restB);
        if (lenA == 0) return lenB == 0 ? 0 : -1;
        if (lenB == 0) return 1;
        const ppType typeA = stringToType(restA.substr(0, lenA));
        const ppType typeB = stringToType(restB.substr(0, lenB));
        if (const int c = (typeA & 0x3FF) - (typeB & 0x3FF)) return c;
        if (const int c = (typeA & ppTypeComplex) - (typeB & ppTypeComplex)) return c;
        restA = restA.substr(lenA);
        restB = restB.substr(lenB);
    }
    return 0;
}

int ppFunc::compareDescr(const psString& a, const psString& b) {
    const bool inplaceA = a.contains("I"), inplaceB = b.contains("I");
    if (inplaceA != inplaceB) return inplaceA ? 1 : -1;
    if (a.startsWith("C") && b.startsWith("AC4")) return -1;
    if (a.startsWith("AC4") && b.startsWith("C")) return 1;
    return a.compare(b);
}
