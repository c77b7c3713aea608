#include <Pegasus/Schema/MofInstanceBuilder.h>

#include <cfloat>
#include <cmath>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Char16.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

namespace {

std::string typeWord(CIMType type)
{
    switch (type)
    {
    case CIMTYPE_BOOLEAN: return "boolean";
    case CIMTYPE_UINT8: return "uint8";
    case CIMTYPE_SINT8: return "sint8";
    case CIMTYPE_UINT16: return "uint16";
    case CIMTYPE_SINT16: return "sint16";
    case CIMTYPE_UINT32: return "uint32";
    case CIMTYPE_SINT32: return "sint32";
    case CIMTYPE_UINT64: return "uint64";
    case CIMTYPE_SINT64: return "sint64";
    case CIMTYPE_REAL32: return "real32";
    case CIMTYPE_REAL64: return "real64";
    case CIMTYPE_CHAR16: return "char16";
    case CIMTYPE_STRING: return "string";
    case CIMTYPE_DATETIME: return "datetime";
    case CIMTYPE_REFERENCE: return "reference";
    case CIMTYPE_OBJECT: return "object";
    case CIMTYPE_INSTANCE: return "instance";
    }
    return "value";
}

std::string toStd(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

// Converts one scalar literal; `fail` throws.
template <class Fail>
bool scalarBool(const MofValue& v, Fail fail)
{
    if (v.kind != MofValue::BOOLEAN)
        fail("is not a boolean");
    return v.boolValue;
}

template <class T, class Fail>
T scalarInteger(const MofValue& v, bool isSigned, unsigned bits, Fail fail)
{
    if (v.kind != MofValue::INTEGER)
        fail("is not an integer");
    if (isSigned ? !v.fitsSigned(bits) : !v.fitsUnsigned(bits))
        fail("is out of range");
    return isSigned ? static_cast<T>(v.asSigned()) : static_cast<T>(v.asUnsigned());
}

template <class Fail>
double scalarReal(const MofValue& v, bool single, Fail fail)
{
    double d = 0.0;
    if (v.kind == MofValue::REAL)
        d = v.realValue;
    else if (v.kind == MofValue::INTEGER)
        d = v.negative ? -static_cast<double>(v.magnitude) : static_cast<double>(v.magnitude);
    else
        fail("is not a number");
    if (!std::isfinite(d) || (single && std::fabs(d) > FLT_MAX))
        fail("is out of range");
    return d;
}

template <class Fail>
Char16 scalarChar(const MofValue& v, Fail fail)
{
    if (v.kind != MofValue::CHAR16)
        fail("is not a char16 literal");
    return Char16(v.charValue);
}

template <class Fail>
String scalarString(const MofValue& v, Fail fail)
{
    if (v.kind != MofValue::STRING)
        fail("is not a string");
    return String(v.text.c_str());
}

template <class Fail>
CIMDateTime scalarDateTime(const MofValue& v, Fail fail)
{
    if (v.kind != MofValue::STRING)
        fail("is not a datetime string");
    try
    {
        return CIMDateTime(String(v.text.c_str()));
    }
    catch (const Exception&)
    {
        fail("is not a valid datetime (yyyymmddhhmmss.mmmmmmsutc or ddddddddhhmmss.mmmmmm:000)");
    }
    return CIMDateTime();
}

// Applies `convert` to a scalar or to every element of an array literal.
template <class T, class Convert, class Fail>
CIMValue convertValue(const MofValue& v, bool isArray, Convert convert, Fail fail)
{
    if (!isArray)
    {
        if (v.kind == MofValue::ARRAY)
            fail("is an array, but the property is not");
        return CIMValue(convert(v));
    }
    if (v.kind != MofValue::ARRAY)
        fail("is a single value, but the property is an array");
    Array<T> out;
    out.reserveCapacity(static_cast<Uint32>(v.elements.size()));
    for (const MofValue& e : v.elements)
    {
        if (e.kind == MofValue::NULL_VALUE)
            fail("holds NULL, which an array element cannot be");
        out.append(convert(e));
    }
    return CIMValue(out);
}

} // namespace

MofInstanceBuilder::MofInstanceBuilder(const ClassRegistry& registry) : _registry(registry)
{
}

CIMValue MofInstanceBuilder::toValue(const MofValue& value, const PropertyDecl& prop,
                                     const std::string& file, unsigned line)
{
    auto fail = [&](const std::string& why) {
        throw SchemaError(file, line,
                          "value " + value.describe() + " for property " + prop.name + " (" +
                              typeWord(prop.type) + (prop.isArray ? "[]" : "") + ") " + why);
    };

    if (value.kind == MofValue::NULL_VALUE)
        return CIMValue(prop.type, prop.isArray, 0);

    if (prop.embeddedObject || !prop.embeddedInstanceClass.empty())
        fail("cannot be given as MOF text: the property holds an embedded object");

    if (prop.isArray && prop.arraySize != 0 && value.kind == MofValue::ARRAY &&
        value.elements.size() != prop.arraySize)
        fail("has " + std::to_string(value.elements.size()) + " elements, but the array holds exactly " +
             std::to_string(prop.arraySize));

    switch (prop.type)
    {
    case CIMTYPE_BOOLEAN:
        return convertValue<Boolean>(value, prop.isArray, [&](const MofValue& v) {
            return static_cast<Boolean>(scalarBool(v, fail)); }, fail);
    case CIMTYPE_UINT8:
        return convertValue<Uint8>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Uint8>(v, false, 8, fail); }, fail);
    case CIMTYPE_SINT8:
        return convertValue<Sint8>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Sint8>(v, true, 8, fail); }, fail);
    case CIMTYPE_UINT16:
        return convertValue<Uint16>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Uint16>(v, false, 16, fail); }, fail);
    case CIMTYPE_SINT16:
        return convertValue<Sint16>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Sint16>(v, true, 16, fail); }, fail);
    case CIMTYPE_UINT32:
        return convertValue<Uint32>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Uint32>(v, false, 32, fail); }, fail);
    case CIMTYPE_SINT32:
        return convertValue<Sint32>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Sint32>(v, true, 32, fail); }, fail);
    case CIMTYPE_UINT64:
        return convertValue<Uint64>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Uint64>(v, false, 64, fail); }, fail);
    case CIMTYPE_SINT64:
        return convertValue<Sint64>(value, prop.isArray, [&](const MofValue& v) {
            return scalarInteger<Sint64>(v, true, 64, fail); }, fail);
    case CIMTYPE_REAL32:
        return convertValue<Real32>(value, prop.isArray, [&](const MofValue& v) {
            return static_cast<Real32>(scalarReal(v, true, fail)); }, fail);
    case CIMTYPE_REAL64:
        return convertValue<Real64>(value, prop.isArray, [&](const MofValue& v) {
            return static_cast<Real64>(scalarReal(v, false, fail)); }, fail);
    case CIMTYPE_CHAR16:
        return convertValue<Char16>(value, prop.isArray, [&](const MofValue& v) {
            return scalarChar(v, fail); }, fail);
    case CIMTYPE_STRING:
        return convertValue<String>(value, prop.isArray, [&](const MofValue& v) {
            return scalarString(v, fail); }, fail);
    case CIMTYPE_DATETIME:
        return convertValue<CIMDateTime>(value, prop.isArray, [&](const MofValue& v) {
            return scalarDateTime(v, fail); }, fail);
    case CIMTYPE_REFERENCE:
        return convertValue<CIMObjectPath>(value, prop.isArray, [&](const MofValue& v) {
            if (v.kind == MofValue::ALIAS)
                fail("is an alias, which only an instance builder can resolve");
            if (v.kind != MofValue::STRING)
                fail("is not an object path");
            try
            {
                return CIMObjectPath(String(v.text.c_str()));
            }
            catch (const Exception& e)
            {
                fail("is not a valid object path: " + toStd(e.getMessage()));
            }
            return CIMObjectPath();
        }, fail);
    case CIMTYPE_OBJECT:
    case CIMTYPE_INSTANCE:
        break;
    }
    fail("cannot be given as MOF text");
    return CIMValue();
}

CIMValue MofInstanceBuilder::_referenceValue(const MofValue& value, const PropertyDecl& prop,
                                             const std::string& file, unsigned line) const
{
    CIMObjectPath path;
    if (value.kind == MofValue::ALIAS)
    {
        auto it = _aliases.find(value.text);
        if (it == _aliases.end())
            throw SchemaError(file, line, "alias $" + value.text + " for property " + prop.name +
                                              " names no instance declared before it");
        path = it->second;
    }
    else
    {
        CIMValue v = toValue(value, prop, file, line);
        if (v.isNull())
            return v;
        v.get(path);
    }
    // The path must name the referenced class or a subclass of it, when the
    // class is known here.
    std::string target = toStd(path.getClassName().getString());
    if (_registry.findClass(target) && _registry.findClass(prop.referenceClass) &&
        !_registry.isSubclassOf(target, prop.referenceClass))
        throw SchemaError(file, line, "reference property " + prop.name + " must refer to " +
                                          prop.referenceClass + " or a subclass, not " + target);
    return CIMValue(path);
}

CIMInstance MofInstanceBuilder::build(const InstanceDecl& decl)
{
    const ClassDecl* cls = _registry.findClass(decl.className);
    if (!cls)
        throw SchemaError(decl.file, decl.line, "instance of undefined class " + decl.className);
    if (cls->isAbstract())
        throw SchemaError(decl.file, decl.line, "instance of abstract class " + cls->name);
    if (!decl.alias.empty() && _aliases.count(decl.alias))
        throw SchemaError(decl.file, decl.line, "alias $" + decl.alias + " is already taken");

    try
    {
        CIMInstance instance{CIMName(cls->name.c_str())};
        Array<CIMKeyBinding> keys;

        auto add = [&](const PropertyDecl& prop, const MofValue& literal, unsigned line) {
            CIMValue value = prop.isReference() ? _referenceValue(literal, prop, decl.file, line)
                                                : toValue(literal, prop, decl.file, line);
            if (prop.isKey)
            {
                if (value.isNull())
                    throw SchemaError(decl.file, line, "key property " + prop.name + " of class " +
                                                           cls->name + " is NULL");
                keys.append(CIMKeyBinding(CIMName(prop.name.c_str()), value));
            }
            instance.addProperty(CIMProperty(CIMName(prop.name.c_str()), value, prop.arraySize,
                                             prop.isReference() ? CIMName(prop.referenceClass.c_str())
                                                                : CIMName(),
                                             CIMName(prop.classOrigin.c_str()), prop.propagated));
        };

        for (const InstancePropertyValue& pv : decl.properties)
        {
            const PropertyDecl* prop = cls->findProperty(pv.name);
            if (!prop)
                throw SchemaError(decl.file, pv.line,
                                  "class " + cls->name + " has no property " + pv.name);
            add(*prop, pv.value, pv.line);
        }
        // A key left out takes its default; without one the instance has no path.
        for (const PropertyDecl* key : cls->keyProperties())
        {
            if (decl.findProperty(key->name))
                continue;
            if (!key->defaultValue || key->defaultValue->isNull())
                throw SchemaError(decl.file, decl.line, "instance of " + cls->name +
                                                            " gives no value for key property " + key->name);
            add(*key, *key->defaultValue, decl.line);
        }

        instance.setPath(CIMObjectPath(String(), CIMNamespaceName(), CIMName(cls->name.c_str()), keys));
        if (!decl.alias.empty())
            _aliases[decl.alias] = instance.getPath();
        return instance;
    }
    catch (const SchemaError&)
    {
        throw;
    }
    catch (const Exception& e)
    {
        throw SchemaError(decl.file, decl.line,
                          "instance of " + cls->name + " cannot be built: " + toStd(e.getMessage()));
    }
}

} // namespace Pegasus
