#include "support/helpers.h"

#include <cstdio>
#include <fstream>
#include <iconv.h>
#include <latch>
#include <sstream>
#include <thread>

size_t assertCount(const char* expr)
{
    const std::string wanted = std::string("Assertion (") + (expr != nullptr ? std::string(expr) + ") failed" : "");
    const std::string log = assertLog();
    size_t count = 0;
    for (size_t at = log.find(wanted); at != std::string::npos; at = log.find(wanted, at + 1)) ++count;
    return count;
}

std::string assertLog() { return fileText("assert.log"); }

std::string fileText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string hexOf(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

void inThreads(int count, const std::function<void(int)>& body)
{
    std::latch start(count);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            body(i);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

uint32_t TextSourceC::codePoint()
{
    switch (below(5)) {
    case 0: return 1 + below(0x7F);
    case 1: return 0x80 + below(0x80);
    case 2: return 0x80 + below(0x780);
    case 3: {
        const uint32_t ch = 0x800 + below(0xF800 - 0x800);
        return ch < 0xD800 ? ch : ch + 0x800;   // past the surrogates
    }
    default: return 0x10000 + below(0x100000);
    }
}

std::vector<uint32_t> TextSourceC::codePoints(size_t maxCount)
{
    std::vector<uint32_t> text(below(static_cast<uint32_t>(maxCount) + 1));
    for (uint32_t& ch : text) ch = codePoint();
    return text;
}

std::string TextSourceC::utf8(size_t maxChars) { return utf8Of(codePoints(maxChars)); }

std::string TextSourceC::bytes(size_t maxBytes)
{
    std::string text(below(static_cast<uint32_t>(maxBytes) + 1), 0);
    for (char& byte : text) byte = static_cast<char>(below(256));
    return text;
}

std::string TextSourceC::damaged(std::string text, int flips)
{
    for (int i = 0; i < flips && !text.empty(); ++i) {
        char& byte = text[below(static_cast<uint32_t>(text.size()))];
        byte = static_cast<char>(byte ^ (1 << below(8)));
    }
    return text;
}

std::string utf8Of(uint32_t ch)
{
    std::string text;
    if (ch < 0x80) {
        text += static_cast<char>(ch);
    } else if (ch < 0x800) {
        text += static_cast<char>(0xC0 | ch >> 6);
        text += static_cast<char>(0x80 | (ch & 0x3F));
    } else if (ch < 0x10000) {
        text += static_cast<char>(0xE0 | ch >> 12);
        text += static_cast<char>(0x80 | (ch >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (ch & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | ch >> 18);
        text += static_cast<char>(0x80 | (ch >> 12 & 0x3F));
        text += static_cast<char>(0x80 | (ch >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (ch & 0x3F));
    }
    return text;
}

std::string utf8Of(const std::vector<uint32_t>& codePoints)
{
    std::string text;
    for (const uint32_t ch : codePoints) text += utf8Of(ch);
    return text;
}

std::string iconvText(std::string_view input, const char* from, const char* to, bool* complete)
{
    const iconv_t converter = iconv_open(to, from);
    std::string out(input.size() * 4 + 16, 0);
    char* in_p = const_cast<char*>(input.data());
    char* out_p = out.data();
    size_t in_left = input.size();
    size_t out_left = out.size();
    const size_t result = iconv(converter, &in_p, &in_left, &out_p, &out_left);
    if (complete != nullptr) *complete = result != static_cast<size_t>(-1) && in_left == 0;
    iconv_close(converter);
    out.resize(out.size() - out_left);
    return out;
}
