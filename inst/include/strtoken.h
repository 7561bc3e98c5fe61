// strtoken.h: taking a text apart at delimiters, and putting the parts together again.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_STRTOKEN_H
#define TVXCMN_STRTOKEN_H

#include "stringar.h"
#include "stringc.h"

class StringTokenizerC {
public:
    // A text that stands ready without a constructor at load time.
    class WhiteSpaceC {
    public:
        operator const StringC&() const;
    };
    static const WhiteSpaceC m_whiteSpace;   // a space and a tab

    // The parts of `text` between characters of `delimiters`, in a new array that the caller deletes. Empty
    // parts are left out unless `allowEmpty`, then a text that ends with a delimiter ends with an empty
    // part; an empty text has no parts. `stripWhite` takes white space off both ends of each part, before
    // it is asked whether the part is empty.
    [[nodiscard]] static StringArrayC* Tokenize(const StringC& text, const StringC& delimiters, bool stripWhite = false,
                                                bool allowEmpty = false);
    // The same, but a delimiter behind an `escapeCharacter` does not divide. What stands before that one is
    // not looked at. Escape characters stay in the parts (StringC::PrefixUnescape takes them away).
    [[nodiscard]] static StringArrayC* PrefixEscapeTokenize(const StringC& text, const StringC& delimiters,
                                                            bool stripWhite, bool allowEmpty, UCS4 escapeCharacter);

    // The strings with `delimitor` between them.
    static StringC Compose(const StringArrayC& tokens, const StringC& delimitor);
    // The same, but with a backslash put in front of every `escapeCharacter` and every backslash in a
    // string: here `escapeCharacter` is what is escaped, not what escapes.
    static StringC PrefixEscapeCompose(const StringArrayC& tokens, const StringC& delimitor, UCS4 escapeCharacter);

    // `text` without the characters of `white` at its front and its end.
    static StringC StripWhite(const StringC& text, const StringC& white);
};

#endif   // TVXCMN_STRTOKEN_H
