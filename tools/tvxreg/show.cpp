#include "show.h"

#include "../support/inputfile.h"
#include "../support/jsontext.h"
#include "inilines.h"
#include "keytree.h"

#include "errornumbers.h"
#include "filename.h"

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <utility>

namespace {

const char KEY_COLOR[] = "\33[1;34m";
const char NAME_COLOR[] = "\33[32m";
const char PLACE_COLOR[] = "\33[35m";

void print(std::initializer_list<std::string_view> texts)
{
    for (const std::string_view text : texts) std::fwrite(text.data(), 1, text.size(), stdout);
}

std::string colored(const char* color, const std::string& text, StyleT style)
{
    return style.isColored ? color + text + "\33[0m" : text;
}

std::string member(const char* name, std::string_view text) { return jsonOf(name) + ": " + jsonOf(text); }

int notFound(const std::string& key, const std::string& name)
{
    return failed(STATUS_FINDINGS, name.empty() ? key : key + " " + name, "not found");
}

// ---- one value ----------------------------------------------------------------------------------------

// Where a value is, with the contents of its file.
struct FoundT {
    const MountT* mount = nullptr;
    std::string section;
    PrefsC contents;
    const char* value = nullptr;   // null: not there
};

int findValue(const MountsC& mounts, const std::string& key, const std::string& name, FoundT& found)
{
    found.mount = mounts.holderOf(key, found.section);
    if (found.mount == nullptr) return STATUS_DONE;
    const int status = loadFile(found.mount->file, found.contents);
    if (status != STATUS_DONE) return status;
    settleSection(found.contents, found.section);
    found.value = found.contents.GetAttr(found.section.c_str(), name.c_str(), nullptr);
    return STATUS_DONE;
}

// The value as JSON or, when it is no text, as both. Empty when it is nothing of the type.
std::string typedValue(const FoundT& found, const std::string& name, ValueTypeE type)
{
    const char* const section = found.section.c_str();
    if (type == ValueTypeE::BOOL) {
        const bool value = found.contents.GetBoolAttr(section, name.c_str(), false);
        if (value != found.contents.GetBoolAttr(section, name.c_str(), true)) return "";
        return value ? "true" : "false";
    }
    long error = 0;
    const long number = StringC(repaired(found.value).c_str()).asLong(&error, 0);
    const bool isNumber = error == 0 || error == TVXERR_NUMBER_TRAILING_TEXT;
    return isNumber && number >= 0 ? std::to_string(number) : "";
}

// ---- trees --------------------------------------------------------------------------------------------

// Loads the tree and finds the key in it.
int loadTree(const MountsC& mounts, const std::string& key, KeyTreeC& tree, size_t& node)
{
    const int status = tree.load(mounts, key);
    if (status != STATUS_DONE) return status;
    node = key.empty() ? KeyTreeC::TOP : tree.find(key);
    return key.empty() || node != KeyTreeC::TOP ? STATUS_DONE : notFound(key, "");
}

std::string valueText(const PrefsKeyElem& value, StyleT style)
{
    return colored(NAME_COLOR, value.ke_name_p, style) + " = " + value.ke_value_p + "\n";
}

std::string valuesJson(const KeyTreeC& tree, size_t node)
{
    std::string array;
    for (const PrefsKeyElem* value : tree.valuesOf(node)) {
        array += (array.empty() ? "{" : ", {") + member("name", value->ke_name_p) + ", " +
                 member("value", value->ke_value_p) + "}";
    }
    return "\"values\": [" + array + "]";
}

// An array of objects, one in each line.
class JsonArrayC {
public:
    void add(const std::string& members)
    {
        print({m_isEmpty ? "[\n {" : ",\n {", members, "}"});
        m_isEmpty = false;
    }
    void finish() const { print({m_isEmpty ? "[]\n" : "\n]\n"}); }

private:
    bool m_isEmpty = true;
};

void printTreeJson(const KeyTreeC& tree, size_t top, bool withEmptyKeys)
{
    JsonArrayC array;
    for (const size_t node : tree.under(top)) {
        if (node == KeyTreeC::TOP || (!withEmptyKeys && tree.node(node).section == nullptr)) continue;
        array.add(member("key", tree.keyOfNode(node)) + ", " + valuesJson(tree, node));
    }
    array.finish();
}

bool matches(std::string_view text, const StringC& pattern)
{
    return FileNameC::wildcardMatch(StringC(repaired(text).c_str()), pattern, 0);
}

}   // namespace

int showValue(const MountsC& mounts, const std::string& key, const std::string& name, ValueTypeE type,
              const std::optional<std::string>& fallback, StyleT style)
{
    FoundT found;
    const int status = findValue(mounts, key, name, found);
    if (status != STATUS_DONE) return status;
    if (found.value == nullptr && !fallback) return notFound(key, name);
    const std::string text = found.value != nullptr ? found.value : *fallback;
    const bool isTyped = type != ValueTypeE::STRING && found.value != nullptr;
    const std::string typed = isTyped ? typedValue(found, name, type) : "";
    if (isTyped && typed.empty()) {
        return failed(STATUS_UNREADABLE, key + " " + name,
                      "\"" + text + "\" is no " + (type == ValueTypeE::BOOL ? "truth value" : "number"));
    }
    if (style.isJson) {
        print({"{", member("key", key), ", ", member("name", name), ", \"value\": ", isTyped ? typed : jsonOf(text),
               "}\n"});
    } else {
        print({isTyped ? typed : text, "\n"});
    }
    return STATUS_DONE;
}

int showOrigin(const MountsC& mounts, const std::string& key, const std::string& name, StyleT style)
{
    FoundT found;
    const int status = findValue(mounts, key, name, found);
    if (status != STATUS_DONE) return status;
    if (found.value == nullptr) return notFound(key, name);
    std::string content;
    if (!readFile(found.mount->file, content)) {
        return failed(STATUS_UNREADABLE, found.mount->file, std::strerror(errno));
    }
    const std::string line = std::to_string(lineOfValue(content, found.section, name));
    if (style.isJson) {
        print({"{", member("key", key), ", ", member("name", name), ", ", member("file", found.mount->file),
               ", \"line\": ", line, ", ", member("value", found.value), "}\n"});
    } else {
        print({colored(PLACE_COLOR, found.mount->file + ":" + line, style), "\n"});
    }
    return STATUS_DONE;
}

int showKey(const MountsC& mounts, const std::string& key, StyleT style)
{
    KeyTreeC tree;
    size_t top;
    const int status = loadTree(mounts, key, tree, top);
    if (status != STATUS_DONE) return status;
    std::string keys;
    for (const size_t child : tree.node(top).children) {
        const std::string& name = tree.node(child).name;
        keys +=
            style.isJson ? (keys.empty() ? "" : ", ") + jsonOf(name) : colored(KEY_COLOR, name + "\\", style) + "\n";
    }
    if (style.isJson) {
        print({"{", member("key", key), ", \"keys\": [", keys, "], ", valuesJson(tree, top), "}\n"});
        return STATUS_DONE;
    }
    print({keys});
    for (const PrefsKeyElem* value : tree.valuesOf(top)) print({valueText(*value, style)});
    return STATUS_DONE;
}

int showTree(const MountsC& mounts, const std::string& key, StyleT style)
{
    KeyTreeC tree;
    size_t top;
    const int status = loadTree(mounts, key, tree, top);
    if (status != STATUS_DONE) return status;
    if (style.isJson) {
        printTreeJson(tree, top, true);
        return STATUS_DONE;
    }
    const size_t outermost = top == KeyTreeC::TOP ? 1 : tree.node(top).depth;
    for (const size_t node : tree.under(top)) {
        if (node == KeyTreeC::TOP) continue;
        const std::string indent(2 * (tree.node(node).depth - outermost), ' ');
        print({indent, colored(KEY_COLOR, node == top ? tree.keyOfNode(node) : tree.node(node).name, style), "\n"});
        for (const PrefsKeyElem* value : tree.valuesOf(node)) print({indent, "  ", valueText(*value, style)});
    }
    return STATUS_DONE;
}

int showExport(const MountsC& mounts, const std::string& key, StyleT style)
{
    KeyTreeC tree;
    size_t top;
    const int status = loadTree(mounts, key, tree, top);
    if (status != STATUS_DONE) return status;
    if (style.isJson) {
        printTreeJson(tree, top, false);
        return STATUS_DONE;
    }
    const char* separator = "";
    for (const size_t node : tree.under(top)) {
        if (tree.node(node).section == nullptr) continue;
        print({std::exchange(separator, "\n"), "[", tree.keyOfNode(node), "]\n"});
        for (const PrefsKeyElem* value : tree.valuesOf(node)) {
            print({value->ke_name_p, "=", value->ke_value_p, "\n"});
        }
    }
    return STATUS_DONE;
}

int showMatches(const MountsC& mounts, const std::string& key, const std::string& pattern, StyleT style)
{
    KeyTreeC tree;
    size_t top;
    const int status = loadTree(mounts, key, tree, top);
    if (status != STATUS_DONE) return status;
    const StringC wanted(repaired(pattern).c_str());
    JsonArrayC array;
    bool isFound = false;
    const auto show = [&](const std::string& where, const PrefsKeyElem* value) {
        isFound = true;
        std::string members = member("key", where);
        if (value != nullptr)
            members += ", " + member("name", value->ke_name_p) + ", " + member("value", value->ke_value_p);
        if (style.isJson) return array.add(members);
        print({colored(KEY_COLOR, where, style), value != nullptr ? " " : "\n"});
        if (value != nullptr) print({valueText(*value, style)});
    };
    for (const size_t node : tree.under(top)) {
        if (node != KeyTreeC::TOP && matches(tree.node(node).name, wanted)) show(tree.keyOfNode(node), nullptr);
        for (const PrefsKeyElem* value : tree.valuesOf(node)) {
            if (matches(value->ke_name_p, wanted) || matches(value->ke_value_p, wanted)) {
                show(tree.keyOfNode(node), value);
            }
        }
    }
    if (style.isJson) array.finish();
    return isFound ? STATUS_DONE : STATUS_FINDINGS;
}

void showFindings(const std::vector<FindingT>& findings, StyleT style)
{
    if (style.isJson || !style.isColored) return printFindings(stdout, findings, style.isJson);
    for (const FindingT& finding : findings) {
        const std::string place =
            finding.file + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ":";
        print({colored(PLACE_COLOR, place, style), " ", finding.message, "\n"});
    }
}
