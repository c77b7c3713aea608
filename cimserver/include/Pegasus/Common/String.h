#ifndef Pegasus_String_h
#define Pegasus_String_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Char16.h>

#include <iosfwd>
#include <memory>
#include <string>

PEGASUS_NAMESPACE_BEGIN

class String;

// A UTF-8 copy of a String, valid as long as the CString lives.
class PEGASUS_COMMON_LINKAGE CString {
public:
    CString();
    CString(const CString& cstr);
    ~CString();
    CString& operator=(const CString& cstr);
    operator const char*() const;

private:
    explicit CString(std::string text);
    std::shared_ptr<const std::string> _rep;
    friend class String;
};

// Text in UTF-16 code units, with value semantics. UTF-8 goes in through the
// char constructors and out through getCString(). A byte sequence that is
// not valid UTF-8 is taken as Latin-1 byte by byte, so that no input is lost
// and nothing throws on a foreign encoding.
class PEGASUS_COMMON_LINKAGE String {
public:
    static const String EMPTY;

    String();
    String(const String& str);
    String(const String& str, Uint32 n);
    String(const Char16* str);
    String(const Char16* str, Uint32 n);
    String(const char* str);
    String(const char* str, Uint32 n);
    ~String();

    String& operator=(const String& str);
    String& assign(const String& str);
    String& assign(const Char16* str);
    String& assign(const Char16* str, Uint32 n);
    String& assign(const char* str);
    String& assign(const char* str, Uint32 n);

    void clear();
    void reserveCapacity(Uint32 capacity);
    Uint32 size() const { return Uint32(_rep.size()); }
    const Char16* getChar16Data() const;
    CString getCString() const;

    Char16& operator[](Uint32 index);
    const Char16 operator[](Uint32 index) const;

    String& append(const Char16& c);
    String& append(const Char16* str, Uint32 n);
    String& append(const String& str);

    void remove(Uint32 index, Uint32 size = PEG_NOT_FOUND);
    String subString(Uint32 index, Uint32 n = PEG_NOT_FOUND) const;

    Uint32 find(Char16 c) const;
    Uint32 find(Uint32 index, Char16 c) const;
    Uint32 find(const String& s) const;
    Uint32 reverseFind(Char16 c) const;

    void toLower();
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    void toUpper();
#endif

    void appendPrintf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    static int compare(const String& s1, const String& s2, Uint32 n);
    static int compare(const String& s1, const String& s2);
    static int compareNoCase(const String& s1, const String& s2);
    static Boolean equal(const String& s1, const String& s2);
    static Boolean equalNoCase(const String& s1, const String& s2);

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    String(const String& s1, const String& s2);
    String(const String& s1, const char* s2);
    String(const char* s1, const String& s2);
    String& operator=(const char* str);
    Uint32 find(const char* s) const;
    static Boolean equal(const String& s1, const char* s2);
    static int compare(const String& s1, const char* s2);
    String& append(const char* str);
    String& append(const char* str, Uint32 size);
    static Boolean equalNoCase(const String& s1, const char* s2);
#endif

    // Server-side extensions: UTF-8 text as a std::string, and a hash that
    // ignores ASCII case (for names).
    std::string toUtf8() const;
    static String fromUtf8(const std::string& text);
    const std::u16string& u16() const { return _rep; }

private:
    std::u16string _rep;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE String operator+(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE std::ostream& operator<<(std::ostream& os, const String& str);

PEGASUS_NAMESPACE_END

#endif
