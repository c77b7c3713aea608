#include <Pegasus/Schema/MofValue.h>

#include <limits>

namespace Pegasus {

MofValue MofValue::makeNull()
{
    MofValue v;
    v.kind = NULL_VALUE;
    v.raw = "NULL";
    return v;
}

MofValue MofValue::makeString(const std::string& utf8)
{
    MofValue v;
    v.kind = STRING;
    v.text = utf8;
    return v;
}

MofValue MofValue::makeInteger(bool negative, std::uint64_t magnitude)
{
    MofValue v;
    v.kind = INTEGER;
    v.negative = negative && magnitude != 0;
    v.magnitude = magnitude;
    v.raw = (v.negative ? "-" : "") + std::to_string(magnitude);
    return v;
}

MofValue MofValue::makeReal(double value)
{
    MofValue v;
    v.kind = REAL;
    v.realValue = value;
    return v;
}

MofValue MofValue::makeBoolean(bool value)
{
    MofValue v;
    v.kind = BOOLEAN;
    v.boolValue = value;
    v.raw = value ? "TRUE" : "FALSE";
    return v;
}

MofValue MofValue::makeChar16(std::uint16_t code)
{
    MofValue v;
    v.kind = CHAR16;
    v.charValue = code;
    if (code < 0x80)
        v.text = std::string(1, static_cast<char>(code));
    else if (code < 0x800)
    {
        v.text += static_cast<char>(0xC0 | (code >> 6));
        v.text += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        v.text += static_cast<char>(0xE0 | (code >> 12));
        v.text += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        v.text += static_cast<char>(0x80 | (code & 0x3F));
    }
    return v;
}

MofValue MofValue::makeAlias(const std::string& name)
{
    MofValue v;
    v.kind = ALIAS;
    v.text = name;
    v.raw = "$" + name;
    return v;
}

MofValue MofValue::makeArray(std::vector<MofValue> elements)
{
    MofValue v;
    v.kind = ARRAY;
    v.elements = std::move(elements);
    return v;
}

bool MofValue::fitsSigned(unsigned bits) const
{
    if (kind != INTEGER || bits == 0 || bits > 64)
        return false;
    std::uint64_t limit = std::uint64_t(1) << (bits - 1); // magnitude of the minimum
    return negative ? magnitude <= limit : magnitude < limit;
}

bool MofValue::fitsUnsigned(unsigned bits) const
{
    if (kind != INTEGER || bits == 0 || bits > 64 || negative)
        return false;
    if (bits == 64)
        return true;
    return magnitude < (std::uint64_t(1) << bits);
}

std::int64_t MofValue::asSigned() const
{
    if (!negative)
        return static_cast<std::int64_t>(magnitude);
    if (magnitude == (std::uint64_t(1) << 63))
        return std::numeric_limits<std::int64_t>::min();
    return -static_cast<std::int64_t>(magnitude);
}

std::uint64_t MofValue::asUnsigned() const
{
    return magnitude;
}

std::string MofValue::describe() const
{
    switch (kind)
    {
    case NULL_VALUE:
        return "NULL";
    case STRING:
        return "string \"" + text + "\"";
    case INTEGER:
        return "integer " + (raw.empty() ? std::string(negative ? "-" : "") + std::to_string(magnitude) : raw);
    case REAL:
        return "real " + (raw.empty() ? std::to_string(realValue) : raw);
    case BOOLEAN:
        return boolValue ? "boolean TRUE" : "boolean FALSE";
    case CHAR16:
        return "char16 '" + text + "'";
    case ALIAS:
        return "alias $" + text;
    case ARRAY:
        return "array of " + std::to_string(elements.size()) + (elements.size() == 1 ? " value" : " values");
    }
    return "value";
}

} // namespace Pegasus
