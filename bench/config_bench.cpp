// Group "config": an INI file loaded, asked, changed and saved, by itself and as a part of the registry.
//
// The file has 500 sections of 20 keys each, and no comments, on which the libraries disagree; it is in the page
// cache when the clock runs. Every library keeps what it loaded, but for inih, which only hands the values out;
// QSettings gets another copy of the file each time, because it remembers files, and is made to parse all of it.
//
// The registry resolves paths below a root and looks whether the file has changed, once in a second; the others look
// into what they have loaded.
//
// A change is on the disk when it is done, the file and its directory, but for QSettings', which leaves the directory
// out, and for Boost's, which only writes. Ours merges it into the file as it then is and keeps comments and what other
// processes wrote; QSettings merges as well; the others write what they hold.
//
// The time of a program is the processor time that the system counts for its process, its start included; the limit is
// a program that does nothing.

#include "configuration.h"
#include "confregistry.h"
#include "prefs.h"
#include "tvxcmn.h"

#include "support/bench.h"
#include "support/process.h"
#include "support/workload.h"

#include <QSettings>
#include <QString>
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <glib.h>
#include <ini.h>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
namespace pt = boost::property_tree;

const int SECTIONS = 500;
const int KEYS = 20;     // of each section
const int COPIES = 64;   // more than QSettings remembers
const int PROCESSES = 4;
const int CHANGES = 200;   // of each process
const int CALLS = 10;      // of a program, in one measurement

std::string numbered(const char* name, int number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%s%05d", name, number);
    return text;
}

// All names and values, and the file that holds them.
class SampleC {
public:
    SampleC()
    {
        std::string path = (fs::temp_directory_path() / "tvxcmn-bench-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) std::abort();
        m_directory = path;
        std::string text;
        for (int i = 0; i < SECTIONS; ++i) {
            sections.push_back(numbered("Section", i));
            text += "[" + sections.back() + "]\n";
            for (int k = 0; k < KEYS; ++k) {
                keys.push_back(numbered("SettingName", i * KEYS + k));
                text += keys.back() + "=" + numbered("a value of usual length ", i * 7 + k) + "\n";
            }
            text += "\n";
        }
        size = text.size();
        for (int i = 0; i < COPIES; ++i) std::ofstream(copy(i), std::ios::binary) << text;
    }
    ~SampleC()
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }
    SampleC(const SampleC&) = delete;
    SampleC& operator=(const SampleC&) = delete;

    std::string copy(int number) const { return (m_directory / numbered("copy", number % COPIES)).string() + ".ini"; }
    std::string saved(const char* library) const
    {
        const fs::path path = m_directory / library;
        if (!fs::exists(path)) fs::copy_file(copy(0), path);
        return path.string();
    }

    std::string unmade(const char* library) const
    {
        const fs::path path = m_directory / library;
        fs::remove(path);
        return path.string();
    }

    std::vector<std::string> sections;
    std::vector<std::string> keys;   // of the first section, then of the next one
    size_t size = 0;

private:
    fs::path m_directory;
};

const SampleC& sample()
{
    static const SampleC made;
    return made;
}

void require(bool condition)
{
    if (!condition) std::abort();
}

// What all of the keys hold, told by `valueOf(section, key)`.
template <class ValueT>
DigestT digestOfAll(ValueT valueOf)
{
    std::string all;
    for (size_t i = 0; i < sample().keys.size(); ++i)
        all += valueOf(sample().sections[i / KEYS], sample().keys[i]) + "\n";
    return digestOf(all);
}

// ---- what the libraries do ----------------------------------------------------------------------------

std::unique_ptr<PrefsC> loadOurs(const std::string& path)
{
    auto prefs = std::make_unique<PrefsC>();
    require(prefs->Load(path.c_str()));
    return prefs;
}
DigestT digestOfOurs(const PrefsC& prefs)
{
    return digestOfAll([&](const auto& section, const auto& key) {
        return std::string(prefs.GetAttr(section.c_str(), key.c_str(), ""));
    });
}

typedef std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> KeyFileT;

// With the comments, which a save is to keep; without, to compare what others do.
KeyFileT loadGlib(const std::string& path, GKeyFileFlags flags)
{
    KeyFileT file(g_key_file_new(), g_key_file_unref);
    require(g_key_file_load_from_file(file.get(), path.c_str(), flags, nullptr) != 0);
    return file;
}
std::string glibValue(GKeyFile* file, const std::string& section, const std::string& key)
{
    const std::unique_ptr<char, decltype(&g_free)> value(
        g_key_file_get_value(file, section.c_str(), key.c_str(), nullptr), g_free);
    return value.get();
}

std::string qtValue(const QSettings& settings, const std::string& section, const std::string& key)
{
    return settings.value(QString::fromLatin1(section + "/" + key)).toString().toStdString();
}

int countPair(void* count, const char*, const char*, const char*)
{
    ++*static_cast<size_t*>(count);
    return 1;
}
int appendValue(void* text, const char*, const char*, const char* value)
{
    static_cast<std::string*>(text)->append(value).append("\n");
    return 1;
}

// ---- rows ---------------------------------------------------------------------------------------------

void addLoading()
{
    const std::string workload = "load 10,000 keys";
    const WorkT work = bytes(sample().size);
    const std::string path = sample().copy(0);
    addVerifiedRow(workload, "ours", work, [=](bool whole) {
        const auto prefs = loadOurs(path);
        return whole ? digestOfOurs(*prefs) : UNCHECKED;
    });
    addVerifiedRow(workload, "GKeyFile", work, [=](bool whole) {
        const KeyFileT file = loadGlib(path, G_KEY_FILE_NONE);
        return whole ? digestOfAll([&](const auto& s, const auto& k) { return glibValue(file.get(), s, k); })
                     : UNCHECKED;
    });
    addVerifiedRow(workload, "QSettings", work, [number = 0](bool whole) mutable {
        const QSettings settings(QString::fromStdString(sample().copy(++number)), QSettings::IniFormat);
        require(settings.allKeys().size() == SECTIONS * KEYS);
        return whole ? digestOfAll([&](const auto& s, const auto& k) { return qtValue(settings, s, k); }) : UNCHECKED;
    });
    addVerifiedRow(workload, "boost::property_tree", work, [=](bool whole) {
        pt::ptree tree;
        pt::read_ini(path, tree);
        return whole ? digestOfAll(
                           [&](const auto& s, const auto& k) { return tree.find(s)->second.find(k)->second.data(); })
                     : UNCHECKED;
    });
    addVerifiedRow(workload, "inih (keeps nothing)", work, [=](bool whole) {
        size_t count = 0;
        std::string text;
        require((whole ? ini_parse(path.c_str(), appendValue, &text) : ini_parse(path.c_str(), countPair, &count)) ==
                0);
        return whole ? digestOf(text) : count;
    });
}

// Asks for every key, by the numbers of its section and itself, and sums up the sizes of the values.
template <class SizeT>
DigestT sumOfSizes(SizeT sizeOf)
{
    DigestT sum = 0;
    for (size_t i = 0; i < sample().keys.size(); ++i) sum += sizeOf(i / KEYS, i);
    return sum;
}
DigestT sumOfGlib(GKeyFile* file)
{
    return sumOfSizes([&](size_t s, size_t k) {
        const std::unique_ptr<char, decltype(&g_free)> value(
            g_key_file_get_value(file, sample().sections[s].c_str(), sample().keys[k].c_str(), nullptr), g_free);
        return std::strlen(value.get());
    });
}

void addAsking()
{
    const std::string workload = "look up every key";
    const WorkT work = items(sample().keys.size());
    const std::string path = sample().copy(0);
    const std::shared_ptr<PrefsC> ours = loadOurs(path);
    addRow(workload, "ours", work, [=] {
        return sumOfSizes([&](size_t s, size_t k) {
            return std::strlen(ours->GetAttr(sample().sections[s].c_str(), sample().keys[k].c_str(), ""));
        });
    });
    const std::shared_ptr<GKeyFile> file(loadGlib(path, G_KEY_FILE_NONE));
    addRow(workload, "GKeyFile", work, [=] { return sumOfGlib(file.get()); });
    const auto settings = std::make_shared<QSettings>(QString::fromStdString(path), QSettings::IniFormat);
    std::vector<QString> names;
    for (size_t i = 0; i < sample().keys.size(); ++i)
        names.push_back(QString::fromStdString(sample().sections[i / KEYS] + "/" + sample().keys[i]));
    addRow(workload, "QSettings", work, [=] {
        DigestT sum = 0;
        for (const QString& name : names) sum += static_cast<DigestT>(settings->value(name).toString().size());
        return sum;
    });
    const auto tree = std::make_shared<pt::ptree>();
    pt::read_ini(path, *tree);
    addRow(workload, "boost::property_tree", work, [=] {
        return sumOfSizes([&](size_t s, size_t k) {
            return tree->find(sample().sections[s])->second.find(sample().keys[k])->second.data().size();
        });
    });
}

void addSaving()
{
    const std::string workload = "change a key and save";
    const WorkT work = bytes(sample().size);
    const std::string& section = sample().sections[SECTIONS / 2];
    const std::string& key = sample().keys[SECTIONS / 2 * KEYS];
    // Each library's file at the end, with the same value set.
    const auto check = [=](const char* library) { return digestOfOurs(*loadOurs(sample().saved(library))); };

    const std::shared_ptr<PrefsC> ours = loadOurs(sample().saved("ours"));
    addVerifiedRow(workload, "ours", work, [=, value = 0](bool whole) mutable {
        ours->SetAttr(section.c_str(), key.c_str(), numbered("v", whole ? 0 : ++value).c_str());
        require(ours->Save(nullptr, true));
        return whole ? check("ours") : UNCHECKED;
    });
    const std::shared_ptr<GKeyFile> file(loadGlib(sample().saved("GKeyFile"), G_KEY_FILE_KEEP_COMMENTS));
    addVerifiedRow(workload, "GKeyFile", work, [=, value = 0](bool whole) mutable {
        g_key_file_set_value(file.get(), section.c_str(), key.c_str(), numbered("v", whole ? 0 : ++value).c_str());
        gsize length = 0;
        const std::unique_ptr<char, decltype(&g_free)> text(g_key_file_to_data(file.get(), &length, nullptr), g_free);
        require(g_file_set_contents_full(
                    sample().saved("GKeyFile").c_str(), text.get(), static_cast<gssize>(length),
                    static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE),
                    0666, nullptr) != 0);
        return whole ? check("GKeyFile") : UNCHECKED;
    });
    const auto settings =
        std::make_shared<QSettings>(QString::fromStdString(sample().saved("QSettings")), QSettings::IniFormat);
    const QString name = QString::fromStdString(section + "/" + key);
    addVerifiedRow(workload, "QSettings", work, [=, value = 0](bool whole) mutable {
        settings->setValue(name, QString::fromStdString(numbered("v", whole ? 0 : ++value)));
        settings->sync();
        require(settings->status() == QSettings::NoError);
        return whole ? check("QSettings") : UNCHECKED;
    });
    const auto tree = std::make_shared<pt::ptree>();
    pt::read_ini(sample().saved("boost"), *tree);
    addVerifiedRow(workload, "boost::property_tree (not on the disk)", work, [=, value = 0](bool whole) mutable {
        tree->find(section)->second.find(key)->second.data() = numbered("v", whole ? 0 : ++value);
        pt::write_ini(sample().saved("boost"), *tree);
        return whole ? check("boost") : UNCHECKED;
    });
}

// At the command line, where each call starts and loads afresh.
void addCommandLines()
{
    const std::string& section = sample().sections[SECTIONS / 2];
    const std::string& key = sample().keys[SECTIONS / 2 * KEYS];
    const auto add = [](const std::string& workload, const char* library, const std::vector<std::string>& command) {
        addTimedRow(workload, library, items(CALLS), [=] {
            double time = 0;
            for (int i = 0; i < CALLS; ++i) time += run(command);
            return time;
        });
    };
    const std::string path = sample().copy(0);
    const std::string getting = "get a value at the command line";
    add(getting, "ours", {TVXREG_PROGRAM, "-i", "HKLM=" + path, "get", "HKLM/" + section, key});
    add(getting, "crudini", {"crudini", "--get", path, section, key});
    add(getting, "git config", {"git", "config", "-f", path, "--get", section + "." + key});
    add(getting, "limit", {"true"});

    const std::string setting = "set a value at the command line";
    const auto copy = [](const char* library) { return sample().saved((std::string("set by ") + library).c_str()); };
    add(setting, "ours", {TVXREG_PROGRAM, "-i", "HKLM=" + copy("ours"), "set", "HKLM/" + section, key, "value"});
    add(setting, "crudini", {"crudini", "--set", copy("crudini"), section, key, "value"});
    add(setting, "git config", {"git", "config", "-f", copy("git"), section + "." + key, "value"});
    add(setting, "limit", {"true"});
}

// ---- the registry -------------------------------------------------------------------------------------

ConfRegistryI* registryOf(const std::string& path, const char* base)
{
    ConfRegistryI* const registry = getConfiguration(2)->registry();
    require(registry->AddIniFile(path.c_str(), "HKLM", base) == 0);
    return registry;
}

void addReading()
{
    const WorkT work = items(sample().keys.size());
    ConfRegistryI* const registry = registryOf(sample().copy(0), "Read");
    const auto names = std::make_shared<std::vector<StringC>>();
    const auto paths = std::make_shared<std::vector<StringC>>();
    const auto handles = std::make_shared<std::vector<unsigned long>>();
    for (const std::string& key : sample().keys) names->push_back(key.c_str());
    for (const std::string& section : sample().sections) {
        paths->push_back(("Read\\" + section).c_str());
        handles->push_back(0);
        require(registry->OpenKey(HKEY_LOCAL_MACHINE, paths->back(), KEY_READ, &handles->back()) == 0);
    }
    const std::shared_ptr<GKeyFile> file(loadGlib(sample().copy(0), G_KEY_FILE_NONE));
    const auto readGlib = [=] { return sumOfGlib(file.get()); };
    addRow("read every value by path", "ours", work, [=] {
        StringC value;
        return sumOfSizes([&](size_t s, size_t k) {
            require(registry->ReadString(HKEY_LOCAL_MACHINE, (*paths)[s], (*names)[k], &value) == 0);
            return value.utf8Bytes();
        });
    });
    addRow("read every value by path", "GKeyFile", work, readGlib);
    addRow("read every value by handle", "ours", work, [=] {
        StringC value;
        const StringC itself;
        return sumOfSizes([&](size_t s, size_t k) {
            require(registry->ReadString((*handles)[s], itself, (*names)[k], &value) == 0);
            return value.utf8Bytes();
        });
    });
    addRow("read every value by handle", "GKeyFile", work, readGlib);
}

void addChanging()
{
    const std::string workload = "change a value on the disk";
    const WorkT work = items(1);
    const std::string& section = sample().sections[SECTIONS / 2];
    const std::string& key = sample().keys[SECTIONS / 2 * KEYS];

    ConfRegistryI* const registry = registryOf(sample().saved("ours.ini"), "Change");
    const StringC path(("Change\\" + section).c_str());
    addRow(workload, "ours", work, [=, value = 0]() mutable {
        require(registry->CreateString(HKEY_LOCAL_MACHINE, path, key.c_str(), numbered("v", ++value).c_str()) == 0);
        return 1;
    });
    const std::shared_ptr<GKeyFile> file(loadGlib(sample().saved("glib.ini"), G_KEY_FILE_KEEP_COMMENTS));
    addRow(workload, "GKeyFile (no merge)", work, [=, value = 0]() mutable {
        g_key_file_set_value(file.get(), section.c_str(), key.c_str(), numbered("v", ++value).c_str());
        gsize length = 0;
        const std::unique_ptr<char, decltype(&g_free)> text(g_key_file_to_data(file.get(), &length, nullptr), g_free);
        require(g_file_set_contents_full(
                    sample().saved("glib.ini").c_str(), text.get(), static_cast<gssize>(length),
                    static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE),
                    0666, nullptr) != 0);
        return 1;
    });
    const auto settings =
        std::make_shared<QSettings>(QString::fromStdString(sample().saved("qt.ini")), QSettings::IniFormat);
    addRow(workload, "QSettings", work, [=, value = 0]() mutable {
        settings->setValue(QString::fromStdString(section + "/" + key), QString::fromStdString(numbered("v", ++value)));
        settings->sync();
        require(settings->status() == QSettings::NoError);
        return 1;
    });
    const auto tree = std::make_shared<pt::ptree>();
    pt::read_ini(sample().saved("boost.ini"), *tree);
    addRow(workload, "boost::property_tree (no merge, not on the disk)", work, [=, value = 0]() mutable {
        tree->find(section)->second.find(key)->second.data() = numbered("v", ++value);
        pt::write_ini(sample().saved("boost.ini"), *tree);
        return 1;
    });
}

// The seconds that several processes take to make all of their changes, after which each must be in the file.
double secondsOfProcesses(const std::string& path, const std::function<void(int process)>& changeAll)
{
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < PROCESSES; ++i) {
        if (fork() != 0) continue;
        changeAll(i);
        _exit(0);
    }
    for (int status = 0; wait(&status) > 0;) require(status == 0);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    pt::ptree tree;
    pt::read_ini(path, tree);
    require(tree.find("Shared")->second.size() == static_cast<size_t>(PROCESSES * CHANGES));
    return seconds;
}

void addProcesses()
{
    const std::string workload = "4 processes, 200 changes each, one file";
    const WorkT work = items(static_cast<size_t>(PROCESSES * CHANGES));
    addTimedRow(workload, "ours", work, [] {
        const std::string path = sample().unmade("shared-ours.ini");
        return secondsOfProcesses(path, [&](int process) {
            ConfRegistryI* const registry = registryOf(path, "Shared");
            for (int i = 0; i < CHANGES; ++i) {
                const std::string name = numbered("n", process * CHANGES + i);
                require(registry->CreateString(HKEY_LOCAL_MACHINE, "Shared\\Shared", name.c_str(), "value") == 0);
            }
        });
    });
    addTimedRow(workload, "QSettings", work, [] {
        const std::string path = sample().unmade("shared-qt.ini");
        return secondsOfProcesses(path, [&](int process) {
            QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
            for (int i = 0; i < CHANGES; ++i) {
                settings.setValue(QString::fromStdString("Shared/" + numbered("n", process * CHANGES + i)), "value");
                settings.sync();
            }
        });
    });
}

}   // namespace

void registerRows()
{
    addLoading();
    addAsking();
    addSaving();
    addReading();
    addChanging();
    addProcesses();
    addCommandLines();
}
