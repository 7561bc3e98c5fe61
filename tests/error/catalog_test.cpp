#include "error/api/catalog.h"
#include "error/api/catalogcell.h"
#include "error/api/systemcat.h"
#include "error/catalogfiles.h"
#include "support/helpers.h"
#include "support/system.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace std::string_literals;

const char FILE_NAME[] = "test.cat";
const off_t TOO_LARGE_FOR_MEMORY = off_t{65} << 20;

ErrorT numberOf(unsigned set, unsigned message) { return 0xE0000000L | ErrorT{set} << 16 | message; }

// What the catalog on the disk says about a number; "?" when it does not know it. What is made of it, and kept,
// knows the same numbers.
std::string found(const ErrCatalogC& catalog, ErrorT err)
{
    std::string_view text;
    std::string buffer;
    const bool isThere = catalog.lookup(err, text, buffer);
    for (int time = 0; time < 2; ++time) {
        StringC message;
        ErrSevT sev;
        EXPECT_EQ(catalog.message(err, message, sev), isThere);
    }
    return isThere ? std::string(text) : "?";
}
std::string found(ErrorT err) { return found(ErrCatalogC(StringC(FILE_NAME)), err); }

const std::vector<CatalogRowT> ROWS = {
    {0, 2, "{e} no such thing"}, {12, 5, "{w} low"}, {12, 0xFFFF, ""}, {434, 1, "\1\1{i}\1P\1R\1S"}, {0xFFF, 0, "last"},
};

// Through both doors: from memory, and piece by piece from a file that is too large for it.
TEST(ErrCatalog, findsWhatIsInTheFile)
{
    writeFile(FILE_NAME, catalogBytes(ROWS));
    for (const bool isLarge : {false, true}) {
        SCOPED_TRACE(isLarge);
        if (isLarge) {
            ASSERT_EQ(truncate(FILE_NAME, TOO_LARGE_FOR_MEMORY), 0);
        }
        const ErrCatalogC catalog{StringC(FILE_NAME)};
        for (const CatalogRowT& row : ROWS) EXPECT_EQ(found(catalog, numberOf(row.set, row.message)), row.text);
        for (const ErrorT err :
             {numberOf(0, 1), numberOf(12, 4), numberOf(12, 6), numberOf(13, 5), numberOf(0xFFF, 1)}) {
            EXPECT_EQ(found(catalog, err), "?");
        }
        EXPECT_EQ(found(catalog, numberOf(12, 5) & ~(1L << 29)), "?");
        EXPECT_EQ(found(catalog, 1L << 29 | 12 << 16 | 5), "{w} low");
    }
}

TEST(ErrCatalog, readsWhatPythonHasWritten)
{
    const char* const program =
        "import struct, sys\n"
        "rows = [(s, m, b'%d/%d' % (s, m)) for s in (1, 255, 4095) for m in range(0, 65536, 257)]\n"
        "at, index, texts = 12 + 12 * len(rows), b'', b''\n"
        "for s, m, text in rows:\n"
        "    index += struct.pack('>HHII', s, len(text), m, at + len(texts))\n"
        "    texts += text\n"
        "sys.stdout.buffer.write(struct.pack('>8sI', b'openuict', len(rows)) + index + texts)\n";
    writeFile(FILE_NAME, programOutput({"python3", "-c", program}));
    const ErrCatalogC catalog{StringC(FILE_NAME)};
    for (const unsigned set : {1U, 255U, 4095U}) {
        for (unsigned message = 0; message <= 0xFFFF; ++message) {
            const std::string text = std::to_string(set) + "/" + std::to_string(message);
            ASSERT_EQ(found(catalog, numberOf(set, message)), message % 257 == 0 ? text : "?");
        }
    }
}

TEST(ErrCatalog, appliesMarksAndRepairsBytes)
{
    writeFile(FILE_NAME,
              catalogBytes({{1, 1, "{w} low \xE9"}, {1, 2, "{#}"}, {1, 3, "a\0b"s}, {1, 4, "\1\1{f}\1P\1R\1S"}}));
    ErrCatalogC catalog{StringC(FILE_NAME)};
    const auto message = [&catalog](ErrorT err, const char* def_str) {
        ErrSevT sev = ERR_SEV_MONITOR;
        const StringC text = catalog.getMessage(sev, err, def_str, nullptr);
        return std::to_string(sev) + text.utf8();
    };
    EXPECT_EQ(message(numberOf(1, 1), "x"), "3low \xEF\xBF\xBD");
    EXPECT_EQ(message(numberOf(1, 2), "x"), "0");
    EXPECT_EQ(message(numberOf(1, 3), "x"), "4a");
    EXPECT_EQ(message(numberOf(1, 4), "x"), "5P\1R\1S");
    EXPECT_EQ(message(numberOf(1, 5), "{i}x"), "2x");
    EXPECT_EQ(message(numberOf(1, 5), nullptr), "4");
    catalog.setUserLevel("A");
    EXPECT_EQ(message(numberOf(1, 1), "x"), "3low \xEF\xBF\xBD");
}

TEST(ErrCatalog, isEmptyWithoutACatalogFile)
{
    const size_t before = openDescriptors();
    mkdir("folder", 0777);
    mkfifo("pipe", 0666);
    writeFile("short", "openuict\0\0\0"s);
    writeFile("foreign", "openuicT" + catalogBytes(ROWS).substr(8));
    for (const char* const name : {"", "missing", "folder", "pipe", "short", "foreign", "/dev/zero"}) {
        SCOPED_TRACE(name);
        const ErrCatalogC catalog{StringC(name)};
        EXPECT_FALSE(catalog.isOpen());
        EXPECT_EQ(found(catalog, numberOf(12, 5)), "?");
        EXPECT_EQ(openDescriptors(), before);
    }
}

// Whatever the file says, what comes out stands in it.
TEST(ErrCatalog, survivesEveryFlippedBitAndEveryCut)
{
    const std::string whole = catalogBytes(ROWS);
    std::vector<ErrorT> numbers = {numberOf(0, 3), numberOf(12, 4), numberOf(12, 0x8005)};
    for (const CatalogRowT& row : ROWS) numbers.push_back(numberOf(row.set, row.message));

    for (size_t bit = 0; bit < whole.size() * 8; ++bit) {
        std::string damaged = whole;
        damaged[bit / 8] ^= static_cast<char>(1 << bit % 8);
        writeFile(FILE_NAME, damaged);
        for (const ErrorT err : numbers) {
            const std::string text = found(err);
            EXPECT_TRUE(text == "?" || damaged.find(text) != std::string::npos) << "bit " << bit << ": " << hexOf(text);
        }
    }
    for (size_t size = 0; size < whole.size(); ++size) {
        writeFile(FILE_NAME, whole.substr(0, size));
        for (const CatalogRowT& row : ROWS) {
            const std::string text = found(numberOf(row.set, row.message));
            EXPECT_TRUE(text == "?" || text == row.text) << size << " bytes: " << hexOf(text);
        }
    }
}

TEST(ErrCatalog, doesNotTrustNumbersOfTheFile)
{
    std::string bytes = catalogBytes({{1, 1, "a"}});
    const auto with = [&bytes](size_t at, unsigned long value, int size) {
        return std::string(bytes).replace(at, static_cast<size_t>(size), bigEndian(value, size));
    };
    const size_t COUNT = 8, LENGTH = 14, OFFSET = 20;
    for (const unsigned long count : {0UL, 0x80000000UL, 0xFFFFFFFFUL}) {
        writeFile(FILE_NAME, with(COUNT, count, 4));
        EXPECT_EQ(found(numberOf(1, 1)), "?");
    }
    for (const unsigned long offset : {bytes.size(), 0x7FFFFFFFUL, 0xFFFFFFFFUL}) {
        writeFile(FILE_NAME, with(OFFSET, offset, 4));
        EXPECT_EQ(found(numberOf(1, 1)), "?");
        ASSERT_EQ(truncate(FILE_NAME, TOO_LARGE_FOR_MEMORY), 0);
        EXPECT_EQ(found(numberOf(1, 1)), offset == bytes.size() ? "" : "?");
    }
    bytes = catalogBytes({{1, 1, ""}});
    writeFile(FILE_NAME, with(OFFSET, 0xFFFFFFFF, 4));
    EXPECT_EQ(found(numberOf(1, 1)), "");
    ASSERT_EQ(truncate(FILE_NAME, TOO_LARGE_FOR_MEMORY), 0);
    EXPECT_EQ(found(numberOf(1, 1)), "");
    writeFile(FILE_NAME, with(LENGTH, 0xFFFF, 2));
    EXPECT_EQ(found(numberOf(1, 1)), "?");
}

// Numbers that all belong in one place of the table: as many as it takes there, and more.
TEST(ErrCatalog, findsWhatDoesNotSpread)
{
    std::vector<CatalogRowT> all;
    for (unsigned long set = 0; set <= 0xFFF && all.size() < 300; ++set) {
        for (unsigned message = 0; message <= 0xFFF; ++message) {
            const unsigned number = static_cast<unsigned>(set);
            if ((set << 32 | message) * 0x9E3779B97F4A7C15 >> 54 == 0)
                all.push_back({number, message, std::to_string(set) + "/" + std::to_string(message)});
        }
    }
    for (const long count : {127, 128, 129, 299}) {
        writeFile(FILE_NAME, catalogBytes({all.begin(), all.begin() + count}));
        const ErrCatalogC catalog{StringC(FILE_NAME)};
        for (long i = 0; i < 300; ++i) {
            const CatalogRowT& row = all[static_cast<size_t>(i)];
            EXPECT_EQ(found(catalog, numberOf(row.set, row.message)), i < count ? row.text : "?");
        }
    }
}

TEST(ErrCatalog, keepsItsTextsWhenTheFileIsCut)
{
    writeFile(FILE_NAME, catalogBytes(ROWS));
    const ErrCatalogC catalog{StringC(FILE_NAME)};
    ASSERT_EQ(truncate(FILE_NAME, 0), 0);
    EXPECT_EQ(found(catalog, numberOf(0xFFF, 0)), "last");
}

TEST(ErrSystemCatalog, knowsTheSystemsOwnErrors)
{
    ErrSystemCatalogC catalog;
    ErrSevT sev = ERR_SEV_NONE;
    EXPECT_STREQ(catalog.getMessage(sev, ErrorOfErrno(ENOENT), "x", nullptr).utf8(), std::strerror(ENOENT));
    EXPECT_EQ(sev, ERR_SEV_ERROR);
    EXPECT_STREQ(catalog.getMessage(sev, 1L << 29 | EACCES, "x", nullptr).utf8(), std::strerror(EACCES));
    EXPECT_TRUE(catalog.getMessage(sev, ENOENT, "x", nullptr).isEmpty());
    EXPECT_TRUE(catalog.getMessage(sev, numberOf(1, ENOENT), "x", nullptr).isEmpty());
}

// Each catalog has the same texts, so a wrong one shows that a reader saw a catalog end. No reader keeps more than one.
TEST(ErrCatalogCell, isReadWhileItsCatalogIsReplaced)
{
    std::vector<CatalogRowT> rows;
    for (unsigned message = 0; message < 1000; ++message)
        rows.push_back({1, message, "text " + std::to_string(message)});
    writeFile(FILE_NAME, catalogBytes(rows));
    const size_t before = openDescriptors();
    const auto opened = [] { return std::make_unique<ErrCatalogC>(StringC(FILE_NAME)); };
    static ErrCatalogCellC cell;
    cell.replace(opened());
    std::atomic<int> reading{7};
    size_t most = 0;
    inThreads(8, [&](int thread) {
        if (thread == 0) {
            for (; reading > 0; cell.replace(opened())) most = std::max(most, openDescriptors());
            return;
        }
        for (unsigned i = 0; i < 20000; ++i) {
            const CatalogRowT& row = rows[i % rows.size()];
            StringC text;
            ErrSevT sev;
            if (!cell.message(numberOf(1, row.message), text, sev) || text != StringC(row.text.c_str())) {
                ADD_FAILURE() << "message " << row.message << ": " << text.utf8();
                break;
            }
            if (i % 100 == 0) cell.setUserLevel("A");
        }
        --reading;
    });
    EXPECT_LE(most, before + 1 + 7);
    EXPECT_EQ(openDescriptors(), before + 1);
    const ErrCatalogC* const current = cell.current();
    cell.replaceIf(nullptr, opened());
    EXPECT_EQ(cell.current(), current);
    cell.replaceIf(current, opened());
    EXPECT_NE(cell.current(), current);
    cell.replaceIf(cell.current(), nullptr);
    EXPECT_EQ(openDescriptors(), before);
}

}   // namespace
