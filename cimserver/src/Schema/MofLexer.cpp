#include <Pegasus/Schema/MofLexer.h>

#include <cerrno>
#include <cstdlib>
#include <limits>

#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

namespace {

bool isIdentStart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isIdentChar(char c)
{
    return isIdentStart(c) || (c >= '0' && c <= '9');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

void appendUtf8(std::string& out, std::uint32_t code)
{
    if (code < 0x80)
        out += static_cast<char>(code);
    else if (code < 0x800)
    {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else if (code < 0x10000)
    {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

std::string printable(char c)
{
    unsigned char u = static_cast<unsigned char>(c);
    if (u >= 0x21 && u < 0x7F)
        return std::string("'") + c + "'";
    static const char* hex = "0123456789ABCDEF";
    return std::string("byte 0x") + hex[u >> 4] + hex[u & 15];
}

} // namespace

MofLexer::MofLexer(const std::string& text, const std::string& file)
    : _text(text), _file(file)
{
    // A UTF-8 byte order mark at the start is not part of the MOF.
    if (_text.size() >= 3 && static_cast<unsigned char>(_text[0]) == 0xEF &&
        static_cast<unsigned char>(_text[1]) == 0xBB && static_cast<unsigned char>(_text[2]) == 0xBF)
        _pos = 3;
}

void MofLexer::fail(unsigned line, const std::string& message) const
{
    throw SchemaError(_file, line, message);
}

void MofLexer::_skipSpaceAndComments()
{
    while (_pos < _text.size())
    {
        char c = _text[_pos];
        if (c == '\n')
        {
            ++_line;
            ++_pos;
        }
        else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v')
            ++_pos;
        else if (c == '/' && _pos + 1 < _text.size() && _text[_pos + 1] == '/')
        {
            while (_pos < _text.size() && _text[_pos] != '\n')
                ++_pos;
        }
        else if (c == '/' && _pos + 1 < _text.size() && _text[_pos + 1] == '*')
        {
            unsigned startLine = _line;
            _pos += 2;
            bool closed = false;
            while (_pos < _text.size())
            {
                if (_text[_pos] == '*' && _pos + 1 < _text.size() && _text[_pos + 1] == '/')
                {
                    _pos += 2;
                    closed = true;
                    break;
                }
                if (_text[_pos] == '\n')
                    ++_line;
                ++_pos;
            }
            if (!closed)
                fail(startLine, "comment opened here is not closed before the end of the file");
        }
        else
            break;
    }
}

MofLexer::Token MofLexer::next()
{
    _skipSpaceAndComments();
    Token t;
    t.line = _line;
    if (_pos >= _text.size())
    {
        t.type = END;
        return t;
    }
    char c = _text[_pos];
    if (isIdentStart(c))
    {
        std::size_t start = _pos;
        while (_pos < _text.size() && isIdentChar(_text[_pos]))
            ++_pos;
        t.type = IDENT;
        t.text = _text.substr(start, _pos - start);
        t.raw = t.text;
        return t;
    }
    if (isDigit(c) || ((c == '-' || c == '+' || c == '.') && _pos + 1 < _text.size() &&
                       (isDigit(_text[_pos + 1]) ||
                        (c != '.' && _text[_pos + 1] == '.' && _pos + 2 < _text.size() &&
                         isDigit(_text[_pos + 2])))))
        return _number();
    if (c == '"')
        return _string();
    if (c == '\'')
        return _char();
    if (c == '$')
    {
        std::size_t start = ++_pos;
        while (_pos < _text.size() && isIdentChar(_text[_pos]))
            ++_pos;
        if (_pos == start)
            fail(t.line, "expected an alias name after '$'");
        t.type = ALIAS;
        t.text = _text.substr(start, _pos - start);
        t.raw = "$" + t.text;
        return t;
    }
    static const std::string punct = "{}()[];,=:#";
    if (punct.find(c) != std::string::npos)
    {
        ++_pos;
        t.type = PUNCT;
        t.text = std::string(1, c);
        t.raw = t.text;
        return t;
    }
    fail(t.line, "unexpected " + printable(c));
}

MofLexer::Token MofLexer::_number()
{
    Token t;
    t.line = _line;
    std::size_t start = _pos;
    // The literal runs over every character that could belong to a number,
    // so that "12abc" or "0x" is reported whole rather than split.
    std::size_t end = _pos;
    if (_text[end] == '-' || _text[end] == '+')
        ++end;
    bool hexForm = end + 1 < _text.size() && _text[end] == '0' &&
                   (_text[end + 1] == 'x' || _text[end + 1] == 'X');
    while (end < _text.size())
    {
        char c = _text[end];
        if (isIdentChar(c) || c == '.')
            ++end;
        else if ((c == '-' || c == '+') && !hexForm && (_text[end - 1] == 'e' || _text[end - 1] == 'E'))
            ++end;
        else
            break;
    }
    std::string raw = _text.substr(start, end - start);
    _pos = end;
    t.raw = raw;

    std::string body = raw;
    bool negative = false;
    if (body[0] == '-' || body[0] == '+')
    {
        negative = body[0] == '-';
        body = body.substr(1);
    }
    auto bad = [&](const std::string& why) {
        fail(t.line, "malformed number '" + raw + "'" + (why.empty() ? "" : ": " + why));
    };
    if (body.empty())
        bad("");

    auto accumulate = [&](const std::string& digits, unsigned base) {
        std::uint64_t v = 0;
        const std::uint64_t max = std::numeric_limits<std::uint64_t>::max();
        for (char d : digits)
        {
            int dv = hexValue(d);
            if (dv < 0 || static_cast<unsigned>(dv) >= base)
                bad("digit '" + std::string(1, d) + "' not allowed in base " + std::to_string(base));
            if (v > (max - static_cast<unsigned>(dv)) / base)
                bad("out of the 64-bit range");
            v = v * base + static_cast<unsigned>(dv);
        }
        return v;
    };

    bool isReal = body.find('.') != std::string::npos;
    bool isHex = body.size() >= 2 && body[0] == '0' && (body[1] == 'x' || body[1] == 'X');
    if (!isReal && !isHex && body.find_first_of("eE") != std::string::npos)
        isReal = true;

    if (isHex)
    {
        std::string digits = body.substr(2);
        if (digits.empty())
            bad("no digits after 0x");
        t.magnitude = accumulate(digits, 16);
    }
    else if (isReal)
    {
        // digits [. digits] [e [+-] digits], at least one digit in the mantissa
        std::size_t i = 0;
        std::size_t mantissaDigits = 0;
        while (i < body.size() && isDigit(body[i]))
            ++i, ++mantissaDigits;
        if (i < body.size() && body[i] == '.')
        {
            ++i;
            while (i < body.size() && isDigit(body[i]))
                ++i, ++mantissaDigits;
        }
        if (mantissaDigits == 0)
            bad("");
        if (i < body.size() && (body[i] == 'e' || body[i] == 'E'))
        {
            ++i;
            if (i < body.size() && (body[i] == '+' || body[i] == '-'))
                ++i;
            std::size_t expDigits = 0;
            while (i < body.size() && isDigit(body[i]))
                ++i, ++expDigits;
            if (expDigits == 0)
                bad("no digits in the exponent");
        }
        if (i != body.size())
            bad("");
        errno = 0;
        char* endp = nullptr;
        double v = std::strtod(raw.c_str(), &endp);
        if (errno == ERANGE && (v > 1.0 || v < -1.0))
            bad("out of the real64 range");
        t.type = REAL;
        t.real = v;
        return t;
    }
    else if (body.size() >= 2 && (body.back() == 'b' || body.back() == 'B'))
        t.magnitude = accumulate(body.substr(0, body.size() - 1), 2);
    else if (body.size() >= 2 && body[0] == '0')
        t.magnitude = accumulate(body.substr(1), 8);
    else
        t.magnitude = accumulate(body, 10);

    t.type = INTEGER;
    t.negative = negative && t.magnitude != 0;
    return t;
}

std::uint32_t MofLexer::_escape(unsigned line)
{
    // _pos is just after the backslash.
    if (_pos >= _text.size())
        fail(line, "escape sequence cut off by the end of the file");
    char c = _text[_pos++];
    switch (c)
    {
    case 'b': return '\b';
    case 't': return '\t';
    case 'n': return '\n';
    case 'f': return '\f';
    case 'r': return '\r';
    case '"': return '"';
    case '\'': return '\'';
    case '\\': return '\\';
    case 'x':
    case 'X':
    {
        std::uint32_t v = 0;
        int n = 0;
        while (n < 4 && _pos < _text.size() && hexValue(_text[_pos]) >= 0)
        {
            v = v * 16 + static_cast<std::uint32_t>(hexValue(_text[_pos]));
            ++_pos;
            ++n;
        }
        if (n == 0)
            fail(line, "expected 1 to 4 hexadecimal digits after '\\" + std::string(1, c) + "'");
        if (v == 0)
            fail(line, "the escape '\\x0' (a NUL character) is not allowed");
        if (v >= 0xD800 && v <= 0xDFFF)
            fail(line, "escape names a UTF-16 surrogate, not a character");
        return v;
    }
    default:
        fail(line, "unknown escape sequence '\\" + std::string(1, c) + "'");
    }
}

MofLexer::Token MofLexer::_string()
{
    Token t;
    t.line = _line;
    t.type = STRING;
    std::size_t start = _pos;
    ++_pos; // opening quote
    while (true)
    {
        if (_pos >= _text.size() || _text[_pos] == '\n')
            fail(t.line, "string literal is not closed on its line");
        char c = _text[_pos];
        if (c == '"')
        {
            ++_pos;
            break;
        }
        if (c == '\\')
        {
            ++_pos;
            appendUtf8(t.text, _escape(t.line));
            continue;
        }
        if (c == '\0')
            fail(t.line, "NUL byte inside a string literal");
        t.text += c;
        ++_pos;
    }
    t.raw = _text.substr(start, _pos - start);
    return t;
}

MofLexer::Token MofLexer::_char()
{
    Token t;
    t.line = _line;
    t.type = CHAR16;
    std::size_t start = _pos;
    ++_pos;
    if (_pos >= _text.size() || _text[_pos] == '\n' || _text[_pos] == '\'')
        fail(t.line, "empty or unterminated char16 literal");
    std::uint32_t code = 0;
    if (_text[_pos] == '\\')
    {
        ++_pos;
        code = _escape(t.line);
    }
    else
    {
        // one UTF-8 encoded character
        unsigned char b = static_cast<unsigned char>(_text[_pos]);
        int extra = b < 0x80 ? 0 : (b >> 5) == 6 ? 1 : (b >> 4) == 14 ? 2 : (b >> 3) == 30 ? 3 : -1;
        if (extra < 0 || _pos + static_cast<std::size_t>(extra) >= _text.size())
            fail(t.line, "invalid UTF-8 in char16 literal");
        code = extra == 0 ? b : extra == 1 ? (b & 0x1F) : extra == 2 ? (b & 0x0F) : (b & 0x07);
        ++_pos;
        for (int i = 0; i < extra; ++i)
        {
            unsigned char cb = static_cast<unsigned char>(_text[_pos++]);
            if ((cb >> 6) != 2)
                fail(t.line, "invalid UTF-8 in char16 literal");
            code = (code << 6) | (cb & 0x3F);
        }
        if (code == 0)
            fail(t.line, "NUL character in char16 literal");
    }
    if (code > 0xFFFF)
        fail(t.line, "character in char16 literal lies outside the 16-bit range");
    if (_pos >= _text.size() || _text[_pos] != '\'')
        fail(t.line, "char16 literal must hold exactly one character and end with '");
    ++_pos;
    t.ch = static_cast<std::uint16_t>(code);
    appendUtf8(t.text, code);
    t.raw = _text.substr(start, _pos - start);
    return t;
}

std::string MofLexer::describe(const Token& token)
{
    switch (token.type)
    {
    case END:
        return "end of file";
    case STRING:
        return "string \"" + (token.text.size() > 40 ? token.text.substr(0, 40) + "..." : token.text) + "\"";
    case CHAR16:
        return "char16 " + token.raw;
    case INTEGER:
    case REAL:
        return "number " + token.raw;
    case ALIAS:
        return "alias " + token.raw;
    case IDENT:
    case PUNCT:
        return "'" + token.raw + "'";
    }
    return "'" + token.raw + "'";
}

} // namespace Pegasus
