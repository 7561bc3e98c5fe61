// plainreader.h: a reader of text with one string and no cleverness, beside which the test and the fuzz target of
// StreamReaderC put the real one. What it returns and how often it reads its stream is what counts.
#ifndef TVXCMN_TESTS_PLAINREADER_H
#define TVXCMN_TESTS_PLAINREADER_H

#include "streams.h"
#include "textencoding.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

class PlainReaderC {
public:
    PlainReaderC(InputStreamC& stream, bool detects, TextEncodingI* encoding) : m_stream(stream), m_detects(detects)
    {
        m_decoder.reset((encoding != nullptr ? encoding : TextEncodingI::SYS8())->getDecoder());
    }
    TextEncodingI* encoding() const { return m_decoder->fromEncoding(); }
    bool hasFailed() const { return m_hasFailed; }

    std::string read(unsigned long count)
    {
        while (2 * m_text.size() / 3 < count && readPiece()) {
        }
        size_t size = 0;
        for (unsigned long chars = 0; size < m_text.size() && chars < count; ++chars) {
            do ++size;
            while (size < m_text.size() && (m_text[size] & 0xC0) == 0x80);
        }
        std::string result = m_text.substr(0, size);
        m_text.erase(0, size);
        return result;
    }
    std::string readToEnd()
    {
        std::string text;
        for (std::string more = read(0x7fffffff); !more.empty(); more = read(0x7fffffff)) text += more;
        return text;
    }
    void unRead(const std::string& text) { m_text.insert(0, text); }
    bool readLine(std::string& line)
    {
        line.clear();
        for (;;) {
            std::string chunk = read(128);
            if (chunk.empty()) return !line.empty();
            const size_t end = chunk.find_first_of("\r\n");
            line += chunk.substr(0, end);
            if (end == std::string::npos) continue;
            if (chunk[end] == '\r' && end + 1 == chunk.size()) chunk += read(1);
            unRead(chunk.substr(end + (chunk.substr(end, 2) == "\r\n" ? 2 : 1)));
            return true;
        }
    }

private:
    bool readStream(std::string& piece)
    {
        unsigned char bytes[1024];
        const long n = m_stream.read(bytes, static_cast<long>(sizeof bytes - piece.size()));
        m_hasFailed |= n < 0;
        if (n < 1) return false;
        piece.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(n));
        return true;
    }
    bool readPiece()
    {
        std::string piece;
        if (!readStream(piece)) return false;
        if (m_isFirst) dropMark(piece);
        m_isFirst = false;
        std::string text(m_decoder->maxDecodedLength(piece.size()) + 18, '\0');
        const auto* const in = reinterpret_cast<const U8BitT*>(piece.data());
        text.resize(
            m_decoder->decodeBytes(in, piece.size(), reinterpret_cast<UTF8T*>(text.data()), text.size(), nullptr));
        m_text += text;
        return true;
    }
    void dropMark(std::string& piece)
    {
        struct MarkT {
            TextEncodingI* encoding;
            std::string_view bytes;
        };
        const MarkT marks[] = {{TextEncodingI::UTF8(), "\xEF\xBB\xBF"},
                               {TextEncodingI::UTF16LE(), "\xFF\xFE"},
                               {TextEncodingI::UTF16BE(), "\xFE\xFF"},
                               {TextEncodingI::UTF16(), "\xFF\xFE"}};
        const auto isOwn = [this](const MarkT& mark) { return mark.encoding == encoding(); };
        const MarkT* const own = std::find_if(std::begin(marks), std::end(marks), isOwn);
        if (!m_detects && own == std::end(marks)) return;
        const size_t needed = m_detects ? 3 : own->bytes.size();
        while (piece.size() < needed && readStream(piece)) {
        }
        const auto isThere = [&piece](const MarkT& mark) { return piece.starts_with(mark.bytes); };
        const MarkT* const found = m_detects       ? std::find_if(std::begin(marks), std::end(marks), isThere)
                                   : isThere(*own) ? own
                                                   : std::end(marks);
        if (found == std::end(marks)) return;
        piece.erase(0, found->bytes.size());
        if (m_detects) m_decoder.reset(found->encoding->getDecoder());
    }

    InputStreamC& m_stream;
    const bool m_detects;
    std::unique_ptr<TextDecoderI> m_decoder;
    std::string m_text;
    bool m_isFirst = true;
    bool m_hasFailed = false;
};

#endif   // TVXCMN_TESTS_PLAINREADER_H
