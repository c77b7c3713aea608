#ifndef Pegasus_Schema_MofLexer_h
#define Pegasus_Schema_MofLexer_h

#include <cstdint>
#include <string>

namespace Pegasus {

// Splits MOF text into tokens for MofParser: identifiers, string and char16
// literals (escapes decoded to UTF-8), integers in all their forms, reals,
// $aliases and single punctuation characters. Comments and white space are
// skipped. A malformed literal or a character that has no place in MOF
// throws SchemaError naming the file and line.
class MofLexer
{
public:
    enum TokenType { END, IDENT, STRING, CHAR16, INTEGER, REAL, ALIAS, PUNCT };

    struct Token
    {
        TokenType type = END;
        std::string text;        // IDENT name, STRING/CHAR16 decoded, ALIAS name, PUNCT char
        std::string raw;         // as in the source
        unsigned line = 0;
        bool negative = false;   // INTEGER
        std::uint64_t magnitude = 0;
        double real = 0.0;       // REAL
        std::uint16_t ch = 0;    // CHAR16
    };

    MofLexer(const std::string& text, const std::string& file);

    Token next();

    const std::string& file() const { return _file; }

    // "';'", "'string'", "string \"abc\"", "end of file", ... for messages.
    static std::string describe(const Token& token);

    [[noreturn]] void fail(unsigned line, const std::string& message) const;

private:
    void _skipSpaceAndComments();
    Token _number();
    Token _string();
    Token _char();
    std::uint32_t _escape(unsigned line);

    std::string _text;
    std::string _file;
    std::size_t _pos = 0;
    unsigned _line = 1;
};

} // namespace Pegasus

#endif
