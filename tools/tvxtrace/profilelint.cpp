#include "profilelint.h"

#include "traceprofile.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace {

// How many bytes have to be changed, added or taken away to make one text of the other.
size_t distance(const std::string& a, const std::string& b)
{
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = diagonal + (a[i - 1] != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row.back();
}

std::string nearestAttribute(const std::string& name)
{
    std::string best;
    size_t least = name.size() + 1;
    for (int attribute = 0; attribute < TRACE_ATTRIBUTES; ++attribute) {
        const size_t changes = distance(name, TraceAttributeName(attribute));
        if (best.empty() || changes < least) {
            best = TraceAttributeName(attribute);
            least = changes;
        }
    }
    return best;
}

class LintC {
public:
    explicit LintC(const std::string& path) : m_path(path) {}

    std::vector<FindingT> run(std::FILE* file)
    {
        TraceProfileReaderC reader(file);
        while (reader.next()) {
            m_line = reader.number();
            m_begin = reader.line();
            if (reader.isCut()) {
                find(m_begin + TraceProfileReaderC::MAX_LINE, "the line goes on behind byte 255, which is not read");
            }
            check(ParseTraceProfileLine(reader.line()));
        }
        return std::move(m_findings);
    }

private:
    void find(const char* at, const std::string& message)
    {
        m_findings.push_back({m_path, static_cast<size_t>(m_line), static_cast<size_t>(at - m_begin) + 1, message});
    }

    void check(const TraceProfileItemT& item)
    {
        switch (item.kind) {
        case TraceProfileItemT::SETTING: checkSetting(item); break;
        case TraceProfileItemT::WILDCARD: checkWildcard(item.name); break;
        case TraceProfileItemT::DISABLE:
            if (*item.name == '*') find(item.name, "a wildcard cannot be turned off; this is a class of that name");
            checkClass(item.name);
            break;
        case TraceProfileItemT::ENABLE: checkClass(item.name); break;
        default: break;
        }
    }

    void checkSetting(const TraceProfileItemT& item)
    {
        const std::string name = item.name;
        const int attribute = TraceAttributeNamed(item.name);
        if (attribute == TRACE_ATTRIBUTES) {
            return find(item.name,
                        "unknown attribute \"" + name + "\"; the nearest is \"" + nearestAttribute(name) + "\"");
        }
        int number = 0;
        const bool isMeant = attribute == TRACE_ATTR_FILENAME ? *item.value != 0 : ReadTraceValue(item.value, number);
        if (!isMeant) find(item.value, std::string("value \"") + item.value + "\" of " + name + " means nothing");
    }

    void checkWildcard(const char* component)
    {
        if (*component == 0) {
            find(component, "wildcard without a component");
        } else if (std::strchr(component, '/') != nullptr) {
            find(component, "wildcard with more than one component matches nothing");
        }
        checkTwice(component, "*/", "wildcard");
    }

    // The name counts without its detail prefix.
    void checkClass(const char* name)
    {
        const char* bare = name;
        if (*bare >= '0' && *bare <= '9') bare += bare[1] == ',' ? 2 : 1;
        if (*bare == 0) find(name, "class without a name");
        checkTwice(bare, "", "class");
    }

    void checkTwice(const char* name, const char* prefix, const char* what)
    {
        const auto [known, isNew] = m_named.emplace(prefix + std::string(name), m_line);
        if (isNew) return;
        find(name, std::string(what) + " \"" + name + "\" was named in line " + std::to_string(known->second));
    }

    const std::string m_path;
    std::vector<FindingT> m_findings;
    std::map<std::string, int> m_named;   // classes and wildcards with their first lines
    int m_line = 0;
    const char* m_begin = nullptr;
};

}   // namespace

std::vector<FindingT> lintProfile(const std::string& path, std::FILE* file) { return LintC(path).run(file); }
