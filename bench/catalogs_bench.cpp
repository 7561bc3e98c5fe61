// Group "catalogs": texts of messages, found in a catalog of 10,000.
//
// Each library finds a text by what it is made for: ours and catgets by set and number, gettext by the text in the
// programmer's language. Ours hands out a string that the caller keeps; the others point into their catalogs.

#include "catalogformat.h"
#include "errcatalog.h"

#include "support/bench.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <libintl.h>
#include <nl_types.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

const unsigned SETS = 10;
const unsigned MESSAGES = 1000;   // in each set
const char DOMAIN_NAME[] = "bench";

struct MessageT {
    unsigned set;
    unsigned message;
    std::string key;    // in the programmer's language
    std::string text;   // in the user's
};

std::vector<MessageT> makeMessages()
{
    std::vector<MessageT> all;
    for (unsigned set = 1; set <= SETS; ++set) {
        for (unsigned message = 1; message <= MESSAGES; ++message) {
            const std::string number = std::to_string(set) + "-" + std::to_string(message);
            all.push_back({set, message, "The file " + number + " cannot be opened for writing",
                           "Die Datei " + number +
                               " l\xC3\xA4sst sich nicht zum Schreiben \xC3\xB6"
                               "ffnen"});
        }
    }
    return all;
}

void writeOurs(const fs::path& path, const std::vector<MessageT>& messages)
{
    std::string bytes(ErrCatalogEntryOffset(messages.size()), 0);
    WriteErrCatalogHeader(bytes.data(), static_cast<unsigned>(messages.size()));
    for (size_t i = 0; i < messages.size(); ++i) {
        const MessageT& m = messages[i];
        WriteErrCatalogEntry(&bytes[ErrCatalogEntryOffset(i)],
                             {static_cast<unsigned short>(m.set), static_cast<unsigned short>(m.text.size()), m.message,
                              static_cast<unsigned>(bytes.size())});
        bytes += m.text;
    }
    std::ofstream(path, std::ios::binary) << bytes;
}

void run(const std::string& command)
{
    if (std::system(command.c_str()) != 0) std::abort();
}

void writeGettext(const fs::path& folder, const std::vector<MessageT>& messages)
{
    const fs::path source = folder / "source.po";
    std::ofstream file(source);
    file << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n";
    for (const MessageT& m : messages) file << "\nmsgid \"" << m.key << "\"\nmsgstr \"" << m.text << "\"\n";
    file.close();
    const fs::path target = folder / "xx" / "LC_MESSAGES";
    fs::create_directories(target);
    run("msgfmt -o '" + (target / DOMAIN_NAME).string() + ".mo' '" + source.string() + "'");
}

void writeCatgets(const fs::path& folder, const std::vector<MessageT>& messages)
{
    const fs::path source = folder / "source.msg";
    std::ofstream file(source);
    for (const MessageT& m : messages) {
        if (m.message == 1) file << "$set " << m.set << "\n";
        file << m.message << " " << m.text << "\n";
    }
    file.close();
    run("gencat '" + (folder / "bench.cat").string() + "' '" + source.string() + "'");
}

// The catalogs of all libraries, open, and the messages in the order in which they are looked up.
struct CatalogsT {
    CatalogsT();
    ~CatalogsT() { fs::remove_all(folder); }
    CatalogsT(const CatalogsT&) = delete;
    CatalogsT& operator=(const CatalogsT&) = delete;

    std::string folder = (fs::temp_directory_path() / "catalogs-XXXXXX").string();
    std::vector<MessageT> messages = makeMessages();
    nl_catd catgetsCatalog;
};

CatalogsT::CatalogsT()
{
    if (mkdtemp(folder.data()) == nullptr) std::abort();
    writeOurs(fs::path(folder) / "allcat.cat", messages);
    writeGettext(folder, messages);
    writeCatgets(folder, messages);

    const fs::path before = fs::current_path();
    fs::current_path(folder);
    ErrGetCat();   // opens it
    fs::current_path(before);
    setenv("LANGUAGE", "xx", 1);
    bindtextdomain(DOMAIN_NAME, folder.c_str());
    catgetsCatalog = catopen((folder + "/bench.cat").c_str(), 0);

    uint64_t random = 1;
    for (size_t i = messages.size(); i > 1; --i) {
        random = random * 6364136223846793005 + 1442695040888963407;
        std::swap(messages[i - 1], messages[(random >> 33) % i]);
    }
}

// Looks all messages up; `find(message, use)` gives the text to `use`.
template <class FindT>
void row(const CatalogsT& catalogs, const std::string& workload, const std::string& library, FindT find)
{
    addVerifiedRow(workload, library, items(catalogs.messages.size()), [&catalogs, find](bool whole) {
        DigestT digest = 0;
        for (const MessageT& message : catalogs.messages) {
            find(message, [&digest, whole](std::string_view text) { digest += whole ? digestOf(text) : text.size(); });
        }
        return digest;
    });
}

// Looks up what is in the catalogs, or what is in none of them.
void rows(const CatalogsT& catalogs, const std::string& workload, bool isMiss)
{
    const unsigned miss = isMiss ? MESSAGES : 0;
    static const char DEFAULT[] = "The file cannot be opened for writing";
    row(catalogs, workload, "ours", [=](const MessageT& message, auto use) {
        const ErrorT err = 0xE0000000L | ErrorT{message.set} << 16 | (message.message + miss);
        ErrSevT sev;
        const StringC text = ErrGetCat()->getMessage(sev, err, DEFAULT, nullptr);
        use(std::string_view(text.utf8(), text.utf8Bytes()));
    });
    row(catalogs, workload, "gettext", [=](const MessageT& message, auto use) {
        const char* const key = isMiss ? DEFAULT : message.key.c_str();
        use(std::string_view(dgettext(DOMAIN_NAME, key)));
    });
    row(catalogs, workload, "catgets", [=, &catalogs](const MessageT& message, auto use) {
        use(std::string_view(catgets(catalogs.catgetsCatalog, static_cast<int>(message.set),
                                     static_cast<int>(message.message + miss), DEFAULT)));
    });
}

}   // namespace

void registerRows()
{
    static const CatalogsT catalogs;
    rows(catalogs, "found_of_10k", false);
    rows(catalogs, "missing_of_10k", true);
}
