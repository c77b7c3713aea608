#include <Pegasus/Schema/MofParser.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

#include <Pegasus/Schema/CaseInsensitive.h>
#include <Pegasus/Schema/MofLexer.h>
#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

namespace {

struct TypeName
{
    const char* name;
    CIMType type;
};

const TypeName TYPE_NAMES[] = {
    {"boolean", CIMTYPE_BOOLEAN}, {"uint8", CIMTYPE_UINT8},     {"sint8", CIMTYPE_SINT8},
    {"uint16", CIMTYPE_UINT16},   {"sint16", CIMTYPE_SINT16},   {"uint32", CIMTYPE_UINT32},
    {"sint32", CIMTYPE_SINT32},   {"uint64", CIMTYPE_UINT64},   {"sint64", CIMTYPE_SINT64},
    {"real32", CIMTYPE_REAL32},   {"real64", CIMTYPE_REAL64},   {"char16", CIMTYPE_CHAR16},
    {"string", CIMTYPE_STRING},   {"datetime", CIMTYPE_DATETIME},
};

bool lookupType(const std::string& name, CIMType& type)
{
    for (const TypeName& t : TYPE_NAMES)
    {
        if (CaseInsensitive::equal(name, t.name))
        {
            type = t.type;
            return true;
        }
    }
    return false;
}

std::string typeName(CIMType type)
{
    for (const TypeName& t : TYPE_NAMES)
    {
        if (t.type == type)
            return t.name;
    }
    return type == CIMTYPE_REFERENCE ? "reference" : "object";
}

unsigned integerBits(CIMType type, bool& isSigned)
{
    isSigned = false;
    switch (type)
    {
    case CIMTYPE_UINT8: return 8;
    case CIMTYPE_SINT8: isSigned = true; return 8;
    case CIMTYPE_UINT16: return 16;
    case CIMTYPE_SINT16: isSigned = true; return 16;
    case CIMTYPE_UINT32: return 32;
    case CIMTYPE_SINT32: isSigned = true; return 32;
    case CIMTYPE_UINT64: return 64;
    case CIMTYPE_SINT64: isSigned = true; return 64;
    default: return 0;
    }
}

// Why a scalar literal cannot stand for a value of `type`; empty when it can.
std::string scalarMismatch(const MofValue& v, CIMType type)
{
    if (v.kind == MofValue::NULL_VALUE)
        return std::string();
    bool isSigned = false;
    unsigned bits = integerBits(type, isSigned);
    switch (v.kind)
    {
    case MofValue::INTEGER:
        if (bits)
        {
            bool fits = isSigned ? v.fitsSigned(bits) : v.fitsUnsigned(bits);
            return fits ? std::string() : "out of the range of " + typeName(type);
        }
        if (type == CIMTYPE_REAL32 || type == CIMTYPE_REAL64)
            return std::string();
        break;
    case MofValue::REAL:
        if (type == CIMTYPE_REAL32 || type == CIMTYPE_REAL64)
            return std::string();
        break;
    case MofValue::STRING:
        if (type == CIMTYPE_STRING || type == CIMTYPE_DATETIME || type == CIMTYPE_REFERENCE)
            return std::string();
        break;
    case MofValue::BOOLEAN:
        if (type == CIMTYPE_BOOLEAN)
            return std::string();
        break;
    case MofValue::CHAR16:
        if (type == CIMTYPE_CHAR16)
            return std::string();
        break;
    case MofValue::ALIAS:
        if (type == CIMTYPE_REFERENCE)
            return std::string();
        break;
    default:
        break;
    }
    return "not a " + typeName(type) + " value";
}

bool validNamespaceName(const std::string& ns)
{
    if (ns.empty() || ns.front() == '/' || ns.back() == '/')
        return false;
    char prev = '/';
    for (char c : ns)
    {
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '_' || c == '/';
        if (!ok || (c == '/' && prev == '/'))
            return false;
        prev = c;
    }
    return true;
}

std::string directoryOf(const std::string& path)
{
    std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string joinPath(const std::string& dir, const std::string& rel)
{
    if (!rel.empty() && rel[0] == '/')
        return rel;
    if (dir.empty() || dir == ".")
        return rel;
    if (dir.back() == '/')
        return dir + rel;
    return dir + "/" + rel;
}

} // namespace

// The grammar, one instance per file or text being read.
class MofParserImpl
{
public:
    MofParserImpl(MofParser& owner, const std::string& text, const std::string& file,
                  const std::string& dir)
        : _owner(owner), _lex(text, file), _dir(dir)
    {
    }

    void run();

    // Reads `path` (as named in messages) in place of an include pragma or as
    // the first file; `fromFile`/`fromLine` name the pragma (empty for none).
    static void parseFile(MofParser& owner, const std::string& path, const std::string& fromFile,
                          unsigned fromLine);

private:
    typedef MofLexer::Token Token;

    void _advance() { _tok = _lex.next(); }
    bool _isPunct(char c) const
    {
        return _tok.type == MofLexer::PUNCT && _tok.text[0] == c;
    }
    bool _isKeyword(const char* kw) const
    {
        return _tok.type == MofLexer::IDENT && CaseInsensitive::equal(_tok.text, kw);
    }
    [[noreturn]] void _error(const std::string& message) const { _lex.fail(_tok.line, message); }
    [[noreturn]] void _expected(const std::string& what, const std::string& context) const
    {
        _error("expected " + what + (context.empty() ? "" : " " + context) + ", found " +
               MofLexer::describe(_tok));
    }
    void _expectPunct(char c, const std::string& context)
    {
        if (!_isPunct(c))
            _expected(std::string("'") + c + "'", context);
        _advance();
    }
    std::string _expectIdent(const std::string& what, const std::string& context)
    {
        if (_tok.type != MofLexer::IDENT)
            _expected(what, context);
        std::string name = _tok.text;
        _advance();
        return name;
    }

    void _pragma();
    void _qualifierList(QualifierList& list);
    MofValue _value(const std::string& context);
    MofValue _scalar(const std::string& context);
    void _qualifierType();
    void _class(QualifierList quals, unsigned line);
    void _member(ClassDecl& cls);
    void _parameter(MethodDecl& method);
    void _instance(QualifierList quals, unsigned line);
    void _arraySuffix(bool& isArray, std::uint32_t& size, const std::string& context);
    void _checkLiteral(const MofValue& v, CIMType type, bool isArray, const std::string& what,
                       unsigned line) const;

    MofParser& _owner;
    MofLexer _lex;
    std::string _dir;
    Token _tok;
};

void MofParserImpl::parseFile(MofParser& owner, const std::string& path, const std::string& fromFile,
                              unsigned fromLine)
{
    auto fail = [&](const std::string& message) {
        if (fromFile.empty())
            throw SchemaError(path, 0, message);
        throw SchemaError(fromFile, fromLine, message);
    };

    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        fail("cannot open MOF file '" + path + "': " + std::strerror(errno));
    if (!S_ISREG(st.st_mode))
        fail("MOF file '" + path + "' is not a regular file");

    char resolved[PATH_MAX];
    if (!::realpath(path.c_str(), resolved))
        fail("cannot resolve MOF file '" + path + "': " + std::strerror(errno));
    std::string canonical(resolved);

    for (const std::string& open : owner._includeStack)
    {
        if (open == canonical)
        {
            std::string chain;
            for (const std::string& s : owner._includeStack)
                chain += s + " -> ";
            fail("include cycle: " + chain + canonical);
        }
    }
    if (owner._includeStack.size() >= MofParser::MAX_INCLUDE_DEPTH)
        fail("includes nested deeper than " + std::to_string(MofParser::MAX_INCLUDE_DEPTH) +
             " levels at '" + path + "'");

    std::ifstream in(path, std::ios::binary);
    if (!in)
        fail("cannot open MOF file '" + path + "': " + std::strerror(errno));
    std::ostringstream buffer;
    buffer << in.rdbuf();
    if (in.bad())
        fail("cannot read MOF file '" + path + "'");

    owner._includeStack.push_back(canonical);
    try
    {
        MofParserImpl impl(owner, buffer.str(), path, directoryOf(path));
        impl.run();
    }
    catch (...)
    {
        owner._includeStack.pop_back();
        throw;
    }
    owner._includeStack.pop_back();
}

void MofParserImpl::run()
{
    _advance();
    while (_tok.type != MofLexer::END)
    {
        if (_isPunct('#'))
        {
            _pragma();
            continue;
        }
        unsigned line = _tok.line;
        QualifierList quals;
        if (_isPunct('['))
            _qualifierList(quals);
        if (_isKeyword("class"))
            _class(quals, line);
        else if (_isKeyword("instance"))
            _instance(quals, line);
        else if (_isKeyword("qualifier"))
        {
            if (!quals.empty())
                _error("a qualifier type declaration cannot carry qualifiers");
            _qualifierType();
        }
        else
            _expected("'class', 'instance', 'qualifier' or '#pragma'", "");
    }
}

void MofParserImpl::_pragma()
{
    unsigned line = _tok.line;
    _advance(); // '#'
    if (!_isKeyword("pragma"))
        _expected("'pragma'", "after '#'");
    _advance();
    std::string name = _expectIdent("a pragma name", "after '#pragma'");
    _expectPunct('(', "after the pragma name");
    if (_tok.type != MofLexer::STRING)
        _expected("a string", "as the pragma's parameter");
    std::string value;
    while (_tok.type == MofLexer::STRING)
    {
        value += _tok.text;
        _advance();
    }
    _expectPunct(')', "after the pragma's parameter");

    if (CaseInsensitive::equal(name, "include"))
    {
        if (value.empty())
            _lex.fail(line, "#pragma include names no file");
        parseFile(_owner, joinPath(_dir, value), _lex.file(), line);
    }
    else if (CaseInsensitive::equal(name, "namespace"))
    {
        if (!validNamespaceName(value))
            _lex.fail(line, "invalid namespace name \"" + value +
                                "\" (letters, digits, '_' in segments separated by '/')");
        _owner._namespace = value;
        _owner._handler.namespaceChanged(value, _lex.file(), line);
    }
    // locale, instancelocale, nonlocal, ...: nothing the server acts on.
}

void MofParserImpl::_qualifierList(QualifierList& list)
{
    _advance(); // '['
    while (true)
    {
        QualifierDecl q;
        q.line = _tok.line;
        q.name = _expectIdent("a qualifier name", "in qualifier list");
        if (_isPunct('('))
        {
            _advance();
            q.value = _value("as the value of qualifier " + q.name);
            _expectPunct(')', "after the value of qualifier " + q.name);
        }
        else if (_isPunct('{'))
            q.value = _value("as the value of qualifier " + q.name);
        else
            q.value = MofValue::makeBoolean(true);
        if (_isPunct(':'))
        {
            _advance();
            if (_tok.type != MofLexer::IDENT)
                _expected("a flavor", "after ':' in qualifier " + q.name);
            while (_tok.type == MofLexer::IDENT)
            {
                q.flavors.push_back(_tok.text);
                _advance();
            }
        }
        if (!list.add(q))
            _lex.fail(q.line, "qualifier " + q.name + " given twice");
        if (_isPunct(','))
        {
            _advance();
            continue;
        }
        _expectPunct(']', "to close the qualifier list");
        break;
    }
}

MofValue MofParserImpl::_value(const std::string& context)
{
    if (!_isPunct('{'))
        return _scalar(context);
    std::string raw = "{";
    _advance();
    std::vector<MofValue> elements;
    if (!_isPunct('}'))
    {
        while (true)
        {
            if (_isPunct('{'))
                _error("arrays of arrays are not allowed");
            elements.push_back(_scalar("as an array element"));
            raw += (elements.size() > 1 ? ", " : "") + elements.back().raw;
            if (_isPunct(','))
            {
                _advance();
                continue;
            }
            if (!_isPunct('}'))
                _expected("',' or '}'", "in array value");
            break;
        }
    }
    _advance(); // '}'
    MofValue v = MofValue::makeArray(std::move(elements));
    v.raw = raw + "}";
    return v;
}

MofValue MofParserImpl::_scalar(const std::string& context)
{
    MofValue v;
    switch (_tok.type)
    {
    case MofLexer::STRING:
    {
        // Adjacent string literals form one string.
        std::string text;
        std::string raw;
        while (_tok.type == MofLexer::STRING)
        {
            text += _tok.text;
            raw += (raw.empty() ? "" : " ") + _tok.raw;
            _advance();
        }
        v = MofValue::makeString(text);
        v.raw = raw;
        return v;
    }
    case MofLexer::INTEGER:
        v = MofValue::makeInteger(_tok.negative, _tok.magnitude);
        break;
    case MofLexer::REAL:
        v = MofValue::makeReal(_tok.real);
        break;
    case MofLexer::CHAR16:
        v = MofValue::makeChar16(_tok.ch);
        break;
    case MofLexer::ALIAS:
        v = MofValue::makeAlias(_tok.text);
        break;
    case MofLexer::IDENT:
        if (_isKeyword("true") || _isKeyword("false"))
            v = MofValue::makeBoolean(_isKeyword("true"));
        else if (_isKeyword("null"))
            v = MofValue::makeNull();
        else
            _expected("a value", context);
        break;
    default:
        _expected("a value", context);
    }
    v.raw = _tok.raw;
    _advance();
    return v;
}

void MofParserImpl::_checkLiteral(const MofValue& v, CIMType type, bool isArray,
                                  const std::string& what, unsigned line) const
{
    if (v.kind == MofValue::NULL_VALUE)
        return;
    if (v.kind == MofValue::ARRAY)
    {
        if (!isArray)
            _lex.fail(line, "array value given for " + what + ", which is not an array");
        for (const MofValue& e : v.elements)
        {
            std::string why = scalarMismatch(e, type);
            if (!why.empty())
                _lex.fail(line, "value " + e.describe() + " for " + what + ": " + why);
        }
        return;
    }
    if (isArray)
        _lex.fail(line, "single value " + v.describe() + " given for array " + what);
    std::string why = scalarMismatch(v, type);
    if (!why.empty())
        _lex.fail(line, "value " + v.describe() + " for " + what + ": " + why);
}

void MofParserImpl::_qualifierType()
{
    _advance(); // 'Qualifier'
    std::string name = _expectIdent("a qualifier name", "after 'Qualifier'");
    _expectPunct(':', "after the qualifier name " + name);
    unsigned typeLine = _tok.line;
    std::string typeText = _expectIdent("a data type", "for qualifier " + name);
    CIMType type;
    if (!lookupType(typeText, type))
        _lex.fail(typeLine, "unknown data type '" + typeText + "' for qualifier " + name);
    bool isArray = false;
    std::uint32_t size = 0;
    _arraySuffix(isArray, size, "in qualifier type " + name);
    if (_isPunct('='))
    {
        _advance();
        unsigned line = _tok.line;
        MofValue v = _value("as the default of qualifier " + name);
        _checkLiteral(v, type, isArray, "qualifier " + name, line);
    }
    // Scope(...) and Flavor(...) lists: read and checked for form only.
    while (_isPunct(','))
    {
        _advance();
        std::string part = _expectIdent("'Scope' or 'Flavor'", "in qualifier type " + name);
        _expectPunct('(', "after " + part);
        while (true)
        {
            _expectIdent("a name", "in the " + part + " list");
            if (_isPunct(','))
            {
                _advance();
                continue;
            }
            break;
        }
        _expectPunct(')', "to close the " + part + " list");
    }
    _expectPunct(';', "after qualifier type declaration " + name);
}

void MofParserImpl::_arraySuffix(bool& isArray, std::uint32_t& size, const std::string& context)
{
    if (!_isPunct('['))
        return;
    _advance();
    isArray = true;
    size = 0;
    if (_tok.type == MofLexer::INTEGER)
    {
        if (_tok.negative || _tok.magnitude == 0 || _tok.magnitude > 0xFFFFFFFFULL)
            _error("array size " + _tok.raw + " must be a positive 32-bit number");
        size = static_cast<std::uint32_t>(_tok.magnitude);
        _advance();
    }
    _expectPunct(']', context);
}

void MofParserImpl::_class(QualifierList quals, unsigned line)
{
    _advance(); // 'class'
    ClassDecl cls;
    cls.file = _lex.file();
    cls.line = line;
    cls.qualifiers = std::move(quals);
    cls.namespaceName = _owner._namespace;
    cls.name = _expectIdent("a class name", "after 'class'");
    if (_isPunct(':'))
    {
        _advance();
        cls.superClassName = _expectIdent("a superclass name", "after ':' in class " + cls.name);
    }
    _expectPunct('{', "to open the body of class " + cls.name);
    while (!_isPunct('}'))
    {
        if (_tok.type == MofLexer::END)
            _expected("'}'", "to close class " + cls.name);
        _member(cls);
    }
    _advance();
    _expectPunct(';', "after the closing '}' of class " + cls.name);
    _owner._handler.classDeclared(cls);
}

void MofParserImpl::_member(ClassDecl& cls)
{
    unsigned line = _tok.line;
    QualifierList quals;
    if (_isPunct('['))
        _qualifierList(quals);
    if (_tok.type != MofLexer::IDENT)
        _expected("a property or method declaration", "in class " + cls.name);
    std::string typeText = _tok.text;
    _advance();

    CIMType type = CIMTYPE_STRING;
    std::string refClass;
    if (_isKeyword("ref"))
    {
        refClass = typeText;
        type = CIMTYPE_REFERENCE;
        _advance();
    }
    else if (!lookupType(typeText, type))
        _lex.fail(line, "unknown data type '" + typeText + "' in class " + cls.name +
                            " (a class name must be followed by REF)");

    std::string name = _expectIdent("a property or method name", "after type '" + typeText + "'");

    if (_isPunct('('))
    {
        if (type == CIMTYPE_REFERENCE)
            _lex.fail(line, "method " + name + " cannot return a reference");
        MethodDecl m;
        m.name = name;
        m.returnType = type;
        m.qualifiers = std::move(quals);
        m.classOrigin = cls.name;
        m.file = _lex.file();
        m.line = line;
        _advance();
        if (!_isPunct(')'))
        {
            while (true)
            {
                _parameter(m);
                if (_isPunct(','))
                {
                    _advance();
                    continue;
                }
                break;
            }
        }
        _expectPunct(')', "to close the parameter list of method " + name);
        _expectPunct(';', "after method declaration " + name);
        cls.localMethods.push_back(std::move(m));
        return;
    }

    PropertyDecl p;
    p.name = name;
    p.type = type;
    p.referenceClass = refClass;
    p.qualifiers = std::move(quals);
    p.classOrigin = cls.name;
    p.file = _lex.file();
    p.line = line;
    _arraySuffix(p.isArray, p.arraySize, "to close the array size of property " + name);
    if (p.isArray && type == CIMTYPE_REFERENCE)
        _lex.fail(line, "reference property " + name + " cannot be an array");
    if (_isPunct('='))
    {
        _advance();
        unsigned valueLine = _tok.line;
        MofValue v = _value("as the default of property " + name);
        _checkLiteral(v, type, p.isArray, "property " + name, valueLine);
        p.defaultValue = v;
    }
    _expectPunct(';', "after property declaration");
    cls.localProperties.push_back(std::move(p));
}

void MofParserImpl::_parameter(MethodDecl& method)
{
    ParameterDecl p;
    p.line = _tok.line;
    if (_isPunct('['))
        _qualifierList(p.qualifiers);
    std::string typeText = _expectIdent("a parameter type", "in method " + method.name);
    if (_isKeyword("ref"))
    {
        p.type = CIMTYPE_REFERENCE;
        p.referenceClass = typeText;
        _advance();
    }
    else if (!lookupType(typeText, p.type))
        _lex.fail(p.line, "unknown data type '" + typeText + "' for a parameter of method " +
                              method.name + " (a class name must be followed by REF)");
    p.name = _expectIdent("a parameter name", "after type '" + typeText + "'");
    _arraySuffix(p.isArray, p.arraySize, "to close the array size of parameter " + p.name);
    if (_isPunct('='))
    {
        _advance();
        unsigned valueLine = _tok.line;
        MofValue v = _value("as the default of parameter " + p.name);
        _checkLiteral(v, p.type, p.isArray, "parameter " + p.name, valueLine);
    }
    bool hasIn = p.qualifiers.has("In");
    bool hasOut = p.qualifiers.has("Out");
    p.isOut = p.qualifiers.isTrue("Out");
    p.isIn = hasIn ? p.qualifiers.isTrue("In") : !hasOut;
    if (!p.isIn && !p.isOut)
        _lex.fail(p.line, "parameter " + p.name + " of method " + method.name +
                              " is neither input nor output");
    p.embeddedInstanceClass = p.qualifiers.stringValue("EmbeddedInstance");
    p.embeddedObject = p.qualifiers.isTrue("EmbeddedObject");
    if ((!p.embeddedInstanceClass.empty() || p.embeddedObject) && p.type != CIMTYPE_STRING)
        _lex.fail(p.line, "parameter " + p.name + " carries an embedded object qualifier but is not a string");
    if (method.findParameter(p.name))
        _lex.fail(p.line, "parameter " + p.name + " declared twice in method " + method.name);
    method.parameters.push_back(std::move(p));
}

void MofParserImpl::_instance(QualifierList quals, unsigned line)
{
    _advance(); // 'instance'
    if (!_isKeyword("of"))
        _expected("'of'", "after 'instance'");
    _advance();
    InstanceDecl inst;
    inst.file = _lex.file();
    inst.line = line;
    inst.qualifiers = std::move(quals);
    inst.namespaceName = _owner._namespace;
    inst.className = _expectIdent("a class name", "after 'instance of'");
    if (_isKeyword("as"))
    {
        _advance();
        if (_tok.type != MofLexer::ALIAS)
            _expected("an alias ($name)", "after 'as'");
        inst.alias = _tok.text;
        _advance();
    }
    _expectPunct('{', "to open instance of " + inst.className);
    while (!_isPunct('}'))
    {
        if (_tok.type == MofLexer::END)
            _expected("'}'", "to close instance of " + inst.className);
        if (_isPunct('['))
        {
            // Qualifiers on instance properties have no effect on the value.
            QualifierList ignored;
            _qualifierList(ignored);
        }
        InstancePropertyValue pv;
        pv.line = _tok.line;
        pv.name = _expectIdent("a property name", "in instance of " + inst.className);
        _expectPunct('=', "after property name " + pv.name);
        pv.value = _value("for property " + pv.name);
        _expectPunct(';', "after the value of property " + pv.name);
        if (inst.findProperty(pv.name))
            _lex.fail(pv.line, "property " + pv.name + " given twice in instance of " + inst.className);
        inst.properties.push_back(std::move(pv));
    }
    _advance();
    _expectPunct(';', "after the closing '}' of instance of " + inst.className);
    _owner._handler.instanceDeclared(inst);
}

MofParser::MofParser(MofHandler& handler) : _handler(handler)
{
}

void MofParser::parseFile(const std::string& path)
{
    _includeStack.clear();
    MofParserImpl::parseFile(*this, path, std::string(), 0);
}

void MofParser::parseString(const std::string& text, const std::string& sourceName,
                            const std::string& baseDir)
{
    _includeStack.clear();
    MofParserImpl impl(*this, text, sourceName, baseDir);
    impl.run();
}

} // namespace Pegasus
