// Groups of entries that register themselves, and the command line of a program that prints them:
// program [width height [group...]].
#pragma once

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <string>
#include <vector>

#include "figures.h"

namespace bench {

// Makes the entries and their data for images of this size.
template <class Entry>
using Group = std::vector<Entry> (*)(ZmoiSize size);

template <class Entry>
std::map<std::string, Group<Entry>>& groups() {
    static std::map<std::string, Group<Entry>> registered;
    return registered;
}

template <class Entry>
class Registered {
  public:
    Registered(const char* name, Group<Entry> group) { groups<Entry>()[name] = group; }
};

template <class Entry>
int usage(const char* program) {
    std::fprintf(stderr,
                 "usage: %s [width height [group...]], sides from 1 to 30000, groups:", program);
    for (const auto& group : groups<Entry>()) std::fprintf(stderr, " %s", group.first.c_str());
    std::fprintf(stderr, "\n");
    return 1;
}

// Each group's data live while its entries are printed. printTitle(size) comes first.
template <class Entry, class Title, class Print>
int runGroups(const char* program, int argc, char** argv, Title printTitle, Print print) {
    const ZmoiSize size{argc > 2 ? std::atoi(argv[1]) : 640, argc > 2 ? std::atoi(argv[2]) : 480};
    if (argc == 2 || size.width < 1 || size.height < 1 || size.width > 30000 || size.height > 30000)
        return usage<Entry>(program);
    std::vector<std::string> names;
    for (int i = 3; i < argc; ++i) {
        if (!groups<Entry>().contains(argv[i])) return usage<Entry>(program);
        names.emplace_back(argv[i]);
    }
    if (names.empty()) {
        for (const auto& group : groups<Entry>()) names.push_back(group.first);
    }
    try {
        printTitle(size);
        for (const std::string& name : names) {
            zmoInit();
            for (const Entry& entry : groups<Entry>().at(name)(size)) print(entry);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program, error.what());
        return 1;
    }
    return 0;
}

}  // namespace bench
