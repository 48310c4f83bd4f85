// Where the files of a session lie.
#include "ps.h"

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

// Up to and with the last separator. A program found through PATH has none:
// then it is the working directory, not the root.
psString exeDir() {
    const psString& path = psSession::m_exePath;
    int length = path.length();
    while (length > 0 && !isSeparator(path[length - 1])) --length;
    return path.substr(0, length);
}

psString publish(psString psSettings::*setting, const psString& text) {
    psSettings settings = g_settings;
    settings.*setting = text;
    psPublish(settings);
    return text;
}

}  // namespace

bool psSession::isAbsolutePath(const psString& path) {
    if (path.empty()) return false;
    return isSeparator(path[0]) || (path.length() > 1 && path[1] == ':');
}

psString psSession::genDirName(const psString& dir) {
    if (dir.empty()) return exeDir();
    const psString name = isSeparator(dir[dir.length() - 1]) ? dir : dir + "/";
    return isAbsolutePath(name) ? name : exeDir() + name;
}

psString psSession::genPathName(const psString& dir, const psString& name, const psString& ext) {
    if (isAbsolutePath(name)) return name;
    if (name.empty()) return dir + m_defName + ext;
    return dir + (name.contains(".") ? name : name + ext);
}

psString psSession::genInPath(const psString& name, const psString& ext) {
    return genPathName(m_inDir, name, ext);
}

psString psSession::genOutPath(const psString& name, const psString& ext) {
    return genPathName(m_outDir, name, ext);
}

psString psSession::setInDir(const psString& dir) {
    return publish(&psSettings::inDir, genDirName(dir));
}

psString psSession::setOutDir(const psString& dir) {
    return publish(&psSettings::outDir, genDirName(dir));
}

psString psSession::setDefName(const psString& name) {
    return publish(&psSettings::defName, name);
}
