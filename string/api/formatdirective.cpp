#include "string/api/formatdirective.h"

#include <climits>

namespace {

bool isDigit(UTF8T byte) { return byte >= '0' && byte <= '9'; }

// A run of digits, which must not be empty.
int parseNumber(const UTF8T*& p)
{
    int number = 0;
    for (; isDigit(*p); ++p) {
        const int digit = *p - '0';
        number = number <= (INT_MAX - digit) / 10 ? number * 10 + digit : INT_MAX;
    }
    return number;
}

// What follows a '*'. Only one digit can stand before the '$'.
const UTF8T* parseStar(const UTF8T* p, FormatFieldT& field)
{
    if (isDigit(p[0]) && p[1] == '$') {
        field = {FormatFieldT::NTH_ARG, p[0] - '0' - 1};
        return p + 2;
    }
    field.source = FormatFieldT::NEXT_ARG;
    return p;
}

}   // namespace

const UTF8T* FormatDirectiveT::parse(const UTF8T* p)
{
    if (*p >= 'A') return p;   // the usual directive is just a conversion
    if (*p == '0') {
        pad = '0';
        ++p;
    }
    if (isDigit(*p)) {
        const int number = parseNumber(p);
        if (*p != '$') {
            width = {FormatFieldT::NUMBER, number};
            return parsePrecision(p);
        }
        position = {FormatFieldT::NTH_ARG, number - 1};
        ++p;
    }
    return parsePrecision(parseWidth(parseFlags(p)));
}

const UTF8T* FormatDirectiveT::parseFlags(const UTF8T* p)
{
    for (;; ++p) {
        switch (*p) {
        case '-': left = true; break;
        case '#': alternate = true; break;
        case '+': sign = '+'; break;
        case ' ':
            if (sign == 0) sign = ' ';
            break;
        default: return p;
        }
    }
}

const UTF8T* FormatDirectiveT::parseWidth(const UTF8T* p)
{
    if (!left && *p == '0') {
        pad = '0';
        ++p;
    }
    if (*p == '*') return parseStar(p + 1, width);
    if (isDigit(*p)) width = {FormatFieldT::NUMBER, parseNumber(p)};
    return p;
}

const UTF8T* FormatDirectiveT::parsePrecision(const UTF8T* p)
{
    if (*p != '.') return p;
    ++p;
    if (*p == '*') return parseStar(p + 1, precision);
    precision.source = FormatFieldT::NUMBER;
    if (isDigit(*p)) {
        pad = ' ';
        precision.value = parseNumber(p);
    }
    return p;
}
