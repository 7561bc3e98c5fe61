// show.h: what the registry holds, on standard output, as text or as JSON.
//
// Texts keep the bytes of the files; JSON has U+FFFD for what is not UTF-8.
#ifndef TVXREG_SHOW_H
#define TVXREG_SHOW_H

#include "../support/findings.h"
#include "mounts.h"
#include "status.h"

#include <optional>
#include <string>

struct StyleT {
    bool isJson = false;
    bool isColored = false;
};

enum class ValueTypeE { STRING, DWORD, BOOL };

// A value as a program reads it, or the fallback where there is none.
int showValue(const MountsC& mounts, const std::string& key, const std::string& name, ValueTypeE type,
              const std::optional<std::string>& fallback, StyleT style);
// The file and line that a value comes from.
int showOrigin(const MountsC& mounts, const std::string& key, const std::string& name, StyleT style);
// The keys and values right below a key.
int showKey(const MountsC& mounts, const std::string& key, StyleT style);
// All of them at and below a key, or everywhere when it is empty; indented, or as an INI file.
int showTree(const MountsC& mounts, const std::string& key, StyleT style);
int showExport(const MountsC& mounts, const std::string& key, StyleT style);
// The keys, and the values with their names, that match a pattern of * and ?.
int showMatches(const MountsC& mounts, const std::string& key, const std::string& pattern, StyleT style);
void showFindings(const std::vector<FindingT>& findings, StyleT style);

#endif   // TVXREG_SHOW_H
