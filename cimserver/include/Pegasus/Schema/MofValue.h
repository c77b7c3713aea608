#ifndef Pegasus_Schema_MofValue_h
#define Pegasus_Schema_MofValue_h

#include <cstdint>
#include <string>
#include <vector>

namespace Pegasus {

// One literal as written in MOF: a qualifier value, a property default, or a
// property value of an instance declaration. The literal is kept untyped;
// it is converted when the type it must fit is known (MofInstanceBuilder).
class MofValue
{
public:
    enum Kind
    {
        NULL_VALUE,   // NULL
        STRING,       // "..." (adjacent literals joined, escapes decoded)
        INTEGER,      // decimal, 0x hex, leading-0 octal, 'b' binary
        REAL,         // 1.5, -2e10, .5
        BOOLEAN,      // TRUE / FALSE
        CHAR16,       // 'c' or '\x41'
        ALIAS,        // $name: reference to an aliased instance
        ARRAY         // { v1, v2, ... }
    };

    MofValue() = default;

    static MofValue makeNull();
    static MofValue makeString(const std::string& utf8);
    static MofValue makeInteger(bool negative, std::uint64_t magnitude);
    static MofValue makeReal(double value);
    static MofValue makeBoolean(bool value);
    static MofValue makeChar16(std::uint16_t code);
    static MofValue makeAlias(const std::string& name);
    static MofValue makeArray(std::vector<MofValue> elements);

    Kind kind = NULL_VALUE;

    // STRING: the decoded text (UTF-8). ALIAS: the alias name without '$'.
    // CHAR16: the character as UTF-8.
    std::string text;

    // INTEGER: sign and magnitude, so that the whole uint64 and sint64 ranges
    // are representable. "-0" has negative == false.
    bool negative = false;
    std::uint64_t magnitude = 0;

    double realValue = 0.0;      // REAL
    bool boolValue = false;      // BOOLEAN
    std::uint16_t charValue = 0; // CHAR16

    std::vector<MofValue> elements; // ARRAY

    // The literal as it stood in the source (for messages and diagnostics).
    std::string raw;

    bool isNull() const { return kind == NULL_VALUE; }
    bool isArray() const { return kind == ARRAY; }

    // INTEGER only: whether the value fits a signed / unsigned range of the
    // given width in bits (8, 16, 32, 64), and its value when it does.
    bool fitsSigned(unsigned bits) const;
    bool fitsUnsigned(unsigned bits) const;
    std::int64_t asSigned() const;   // requires fitsSigned(64)
    std::uint64_t asUnsigned() const; // requires fitsUnsigned(64)

    // A short description for error messages: "string \"abc\"", "integer 5",
    // "array of 3 values", ...
    std::string describe() const;
};

} // namespace Pegasus

#endif
