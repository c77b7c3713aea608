#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace {

// Appends the UTF-16 form of UTF-8 text. A byte that does not start a valid
// sequence is taken as a Latin-1 character, so nothing is dropped.
void appendUtf8(std::u16string& out, const char* text, size_t n) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
    size_t i = 0;
    out.reserve(out.size() + n);
    while (i < n) {
        unsigned char c = s[i];
        if (c < 0x80) {
            out.push_back(char16_t(c));
            ++i;
            continue;
        }
        size_t len = 0;
        char32_t cp = 0;
        char32_t min = 0;
        if ((c & 0xE0) == 0xC0) { len = 2; cp = c & 0x1F; min = 0x80; }
        else if ((c & 0xF0) == 0xE0) { len = 3; cp = c & 0x0F; min = 0x800; }
        else if ((c & 0xF8) == 0xF0) { len = 4; cp = c & 0x07; min = 0x10000; }
        bool ok = len > 0 && i + len <= n;
        for (size_t k = 1; ok && k < len; ++k) {
            if ((s[i + k] & 0xC0) != 0x80) ok = false;
            else cp = (cp << 6) | (s[i + k] & 0x3F);
        }
        if (ok && (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))) ok = false;
        if (!ok) {
            out.push_back(char16_t(c));
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(char16_t(0xD800 + (cp >> 10)));
            out.push_back(char16_t(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(char16_t(cp));
        }
        i += len;
    }
}

// UTF-8 of UTF-16 text; a lone surrogate becomes U+FFFD.
std::string toUtf8Text(const std::u16string& s) {
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        char32_t cp = s[i];
        if (cp < 0x80) {
            out.push_back(char(cp));
            continue;
        }
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (s[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        if (cp < 0x800) {
            out.push_back(char(0xC0 | (cp >> 6)));
            out.push_back(char(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            out.push_back(char(0xE0 | (cp >> 12)));
            out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(char(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(char(0xF0 | (cp >> 18)));
            out.push_back(char(0x80 | ((cp >> 12) & 0x3F)));
            out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(char(0x80 | (cp & 0x3F)));
        }
    }
    return out;
}

inline char16_t lowerAscii(char16_t c) { return (c >= 'A' && c <= 'Z') ? char16_t(c + 32) : c; }
inline char16_t upperAscii(char16_t c) { return (c >= 'a' && c <= 'z') ? char16_t(c - 32) : c; }

size_t char16Length(const Char16* str) {
    size_t n = 0;
    while (Uint16(str[n]) != 0) ++n;
    return n;
}

}  // namespace

// ---- CString ----

CString::CString() {}
CString::CString(const CString& cstr) = default;
CString::~CString() {}
CString& CString::operator=(const CString& cstr) = default;
CString::CString(std::string text) : _rep(std::make_shared<const std::string>(std::move(text))) {}
CString::operator const char*() const { return _rep ? _rep->c_str() : ""; }

// ---- String ----

const String String::EMPTY;

String::String() {}
String::String(const String& str) = default;
String::String(const String& str, Uint32 n) {
    if (n > str.size()) throw IndexOutOfBoundsException();
    _rep.assign(str._rep, 0, n);
}
String::String(const Char16* str) { assign(str); }
String::String(const Char16* str, Uint32 n) { assign(str, n); }
String::String(const char* str) { assign(str); }
String::String(const char* str, Uint32 n) { assign(str, n); }
String::~String() {}

String& String::operator=(const String& str) = default;
String& String::assign(const String& str) { _rep = str._rep; return *this; }
String& String::assign(const Char16* str) {
    if (!str) throw NullPointer();
    return assign(str, Uint32(char16Length(str)));
}
String& String::assign(const Char16* str, Uint32 n) {
    if (!str && n) throw NullPointer();
    std::u16string rep;
    rep.reserve(n);
    for (Uint32 i = 0; i < n; ++i) rep.push_back(char16_t(Uint16(str[i])));
    _rep.swap(rep);
    return *this;
}
String& String::assign(const char* str) {
    if (!str) throw NullPointer();
    return assign(str, Uint32(std::strlen(str)));
}
String& String::assign(const char* str, Uint32 n) {
    if (!str && n) throw NullPointer();
    std::u16string rep;
    appendUtf8(rep, str, n);
    _rep.swap(rep);
    return *this;
}

void String::clear() { _rep.clear(); }
void String::reserveCapacity(Uint32 capacity) { _rep.reserve(capacity); }

const Char16* String::getChar16Data() const {
    // Char16 is one 16-bit code unit; the buffer is zero terminated.
    return reinterpret_cast<const Char16*>(_rep.c_str());
}

CString String::getCString() const { return CString(toUtf8Text(_rep)); }
std::string String::toUtf8() const { return toUtf8Text(_rep); }
String String::fromUtf8(const std::string& text) {
    String s;
    appendUtf8(s._rep, text.data(), text.size());
    return s;
}

Char16& String::operator[](Uint32 index) {
    if (index >= _rep.size()) throw IndexOutOfBoundsException();
    return reinterpret_cast<Char16&>(_rep[index]);
}
const Char16 String::operator[](Uint32 index) const {
    if (index >= _rep.size()) throw IndexOutOfBoundsException();
    return Char16(Uint16(_rep[index]));
}

String& String::append(const Char16& c) { _rep.push_back(char16_t(Uint16(c))); return *this; }
String& String::append(const Char16* str, Uint32 n) {
    if (!str && n) throw NullPointer();
    for (Uint32 i = 0; i < n; ++i) _rep.push_back(char16_t(Uint16(str[i])));
    return *this;
}
String& String::append(const String& str) { _rep.append(str._rep); return *this; }

void String::remove(Uint32 index, Uint32 size) {
    if (index > _rep.size()) throw IndexOutOfBoundsException();
    if (size == PEG_NOT_FOUND) size = Uint32(_rep.size() - index);
    if (size > _rep.size() - index) throw IndexOutOfBoundsException();
    _rep.erase(index, size);
}

String String::subString(Uint32 index, Uint32 n) const {
    String s;
    if (index < _rep.size()) s._rep = _rep.substr(index, n == PEG_NOT_FOUND ? std::u16string::npos : n);
    return s;
}

Uint32 String::find(Char16 c) const { return find(0, c); }
Uint32 String::find(Uint32 index, Char16 c) const {
    if (index >= _rep.size()) return PEG_NOT_FOUND;
    size_t pos = _rep.find(char16_t(Uint16(c)), index);
    return pos == std::u16string::npos ? PEG_NOT_FOUND : Uint32(pos);
}
Uint32 String::find(const String& s) const {
    size_t pos = _rep.find(s._rep);
    return pos == std::u16string::npos ? PEG_NOT_FOUND : Uint32(pos);
}
Uint32 String::reverseFind(Char16 c) const {
    size_t pos = _rep.rfind(char16_t(Uint16(c)));
    return pos == std::u16string::npos ? PEG_NOT_FOUND : Uint32(pos);
}

void String::toLower() {
    for (auto& c : _rep) c = lowerAscii(c);
}
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
void String::toUpper() {
    for (auto& c : _rep) c = upperAscii(c);
}
#endif

void String::appendPrintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (n > 0) {
        std::vector<char> buffer(size_t(n) + 1);
        std::vsnprintf(buffer.data(), buffer.size(), format, args);
        appendUtf8(_rep, buffer.data(), size_t(n));
    }
    va_end(args);
}

int String::compare(const String& s1, const String& s2, Uint32 n) {
    size_t l1 = std::min<size_t>(s1._rep.size(), n);
    size_t l2 = std::min<size_t>(s2._rep.size(), n);
    for (size_t i = 0; i < l1 && i < l2; ++i) {
        if (s1._rep[i] != s2._rep[i]) return s1._rep[i] < s2._rep[i] ? -1 : 1;
    }
    return l1 == l2 ? 0 : (l1 < l2 ? -1 : 1);
}
int String::compare(const String& s1, const String& s2) { return compare(s1, s2, PEG_NOT_FOUND); }
int String::compareNoCase(const String& s1, const String& s2) {
    size_t l1 = s1._rep.size(), l2 = s2._rep.size();
    for (size_t i = 0; i < l1 && i < l2; ++i) {
        char16_t a = lowerAscii(s1._rep[i]), b = lowerAscii(s2._rep[i]);
        if (a != b) return a < b ? -1 : 1;
    }
    return l1 == l2 ? 0 : (l1 < l2 ? -1 : 1);
}
Boolean String::equal(const String& s1, const String& s2) { return s1._rep == s2._rep; }
Boolean String::equalNoCase(const String& s1, const String& s2) {
    if (s1._rep.size() != s2._rep.size()) return false;
    for (size_t i = 0; i < s1._rep.size(); ++i) {
        if (lowerAscii(s1._rep[i]) != lowerAscii(s2._rep[i])) return false;
    }
    return true;
}

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
String::String(const String& s1, const String& s2) : _rep(s1._rep + s2._rep) {}
String::String(const String& s1, const char* s2) : _rep(s1._rep) { append(s2); }
String::String(const char* s1, const String& s2) { assign(s1); _rep += s2._rep; }
String& String::operator=(const char* str) { return assign(str); }
Uint32 String::find(const char* s) const { return find(String(s)); }
Boolean String::equal(const String& s1, const char* s2) { return equal(s1, String(s2)); }
int String::compare(const String& s1, const char* s2) { return compare(s1, String(s2)); }
String& String::append(const char* str) {
    if (!str) throw NullPointer();
    appendUtf8(_rep, str, std::strlen(str));
    return *this;
}
String& String::append(const char* str, Uint32 size) {
    if (!str && size) throw NullPointer();
    appendUtf8(_rep, str, size);
    return *this;
}
Boolean String::equalNoCase(const String& s1, const char* s2) { return equalNoCase(s1, String(s2)); }
#endif

Boolean operator==(const String& s1, const String& s2) { return String::equal(s1, s2); }
Boolean operator==(const String& s1, const char* s2) { return String::equal(s1, String(s2)); }
Boolean operator==(const char* s1, const String& s2) { return String::equal(String(s1), s2); }
Boolean operator!=(const String& s1, const String& s2) { return !String::equal(s1, s2); }
Boolean operator<(const String& s1, const String& s2) { return String::compare(s1, s2) < 0; }
Boolean operator<=(const String& s1, const String& s2) { return String::compare(s1, s2) <= 0; }
Boolean operator>(const String& s1, const String& s2) { return String::compare(s1, s2) > 0; }
Boolean operator>=(const String& s1, const String& s2) { return String::compare(s1, s2) >= 0; }
String operator+(const String& s1, const String& s2) {
    String s(s1);
    s.append(s2);
    return s;
}
std::ostream& operator<<(std::ostream& os, const String& str) { return os << str.toUtf8(); }

PEGASUS_NAMESPACE_END
