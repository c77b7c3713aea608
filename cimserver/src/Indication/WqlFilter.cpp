#include <Pegasus/Indication/WqlFilter.h>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <strings.h>

namespace Pegasus {

namespace {

// Deeper nesting than this is refused so that a hostile query cannot
// exhaust the parser's stack.
constexpr int kMaxNesting = 64;
constexpr std::size_t kMaxQueryLength = 64 * 1024;

bool equalNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && ::strncasecmp(a.c_str(), b.c_str(), a.size()) == 0;
}

enum class TokenKind { Identifier, String, Number, Operator, LParen, RParen, Comma, Dot, Star, End };

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;   // identifier or operator as written; string literal unescaped
    std::size_t position = 0;
};

std::string describe(const Token& token) {
    switch (token.kind) {
    case TokenKind::End: return "end of query";
    case TokenKind::String: return "string '" + token.text + "'";
    default: return "'" + token.text + "'";
    }
}

enum class Tri { False, True, Unknown };

Tri triNot(Tri x) {
    if (x == Tri::Unknown) return Tri::Unknown;
    return x == Tri::True ? Tri::False : Tri::True;
}

enum class CompareOp { Eq, Ne, Lt, Le, Gt, Ge };

// A value as the evaluator sees it.
struct Value {
    enum Kind { Null, Str, Num, Bool, Inst, Other } kind = Null;
    std::string str;
    long double num = 0;
    bool boolean = false;
    CIMInstance instance;
};

Value fromCIMValue(const CIMValue& v) {
    Value out;
    if (v.isNull()) return out;
    if (v.isArray()) {
        out.kind = Value::Other;
        return out;
    }
    switch (v.getType()) {
    case CIMTYPE_BOOLEAN: {
        Boolean b = false;
        v.get(b);
        out.kind = Value::Bool;
        out.boolean = b;
        return out;
    }
    case CIMTYPE_UINT8: { Uint8 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_SINT8: { Sint8 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_UINT16: { Uint16 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_SINT16: { Sint16 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_UINT32: { Uint32 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_SINT32: { Sint32 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_UINT64: { Uint64 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_SINT64: { Sint64 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_REAL32: { Real32 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_REAL64: { Real64 x; v.get(x); out.kind = Value::Num; out.num = x; return out; }
    case CIMTYPE_CHAR16:
    case CIMTYPE_STRING:
    case CIMTYPE_DATETIME:
        out.kind = Value::Str;
        out.str = v.toString().toUtf8();
        return out;
    case CIMTYPE_REFERENCE: {
        CIMObjectPath path;
        v.get(path);
        out.kind = Value::Str;
        out.str = path.toString().toUtf8();
        return out;
    }
    case CIMTYPE_INSTANCE: {
        CIMInstance instance;
        v.get(instance);
        out.kind = Value::Inst;
        out.instance = instance;
        return out;
    }
    case CIMTYPE_OBJECT: {
        CIMObject object;
        v.get(object);
        out.kind = Value::Inst;
        out.instance = CIMInstance(object);
        return out;
    }
    }
    out.kind = Value::Other;
    return out;
}

struct Operand {
    bool isProperty = false;
    std::vector<std::string> path;   // property path, e.g. {"SourceInstance", "Name"}
    Value literal;
};

template <class T>
Tri compareOrdered(const T& a, const T& b, CompareOp op) {
    bool r = false;
    switch (op) {
    case CompareOp::Eq: r = a == b; break;
    case CompareOp::Ne: r = !(a == b); break;
    case CompareOp::Lt: r = a < b; break;
    case CompareOp::Le: r = !(b < a); break;
    case CompareOp::Gt: r = b < a; break;
    case CompareOp::Ge: r = !(a < b); break;
    }
    return r ? Tri::True : Tri::False;
}

Tri compareValues(const Value& a, const Value& b, CompareOp op) {
    if (a.kind == Value::Null || b.kind == Value::Null) return Tri::Unknown;
    if (a.kind != b.kind) return Tri::Unknown;
    switch (a.kind) {
    case Value::Str: return compareOrdered(a.str, b.str, op);
    case Value::Num: return compareOrdered(a.num, b.num, op);
    case Value::Bool:
        if (op == CompareOp::Eq) return a.boolean == b.boolean ? Tri::True : Tri::False;
        if (op == CompareOp::Ne) return a.boolean != b.boolean ? Tri::True : Tri::False;
        return Tri::Unknown;
    default: return Tri::Unknown;
    }
}

} // namespace

struct WqlFilter::Node {
    enum Kind { And, Or, Not, Compare, IsNull, Isa } kind = Compare;
    std::shared_ptr<const Node> left;
    std::shared_ptr<const Node> right;
    Operand a;
    Operand b;
    CompareOp op = CompareOp::Eq;
    bool negated = false;          // IS NOT NULL
    std::string className;         // ISA
};

WqlParseError::WqlParseError(std::size_t position, const std::string& expected, const std::string& found)
    : std::runtime_error("Syntax error in the query at position " + std::to_string(position) + ": expected " +
                         expected + ", found " + found),
      _position(position), _expected(expected) {}

// ---------------------------------------------------------------- parser

class WqlParser {
public:
    explicit WqlParser(const std::string& text) : _text(text) {}

    WqlFilter parse() {
        if (_text.size() > kMaxQueryLength)
            throw WqlParseError(kMaxQueryLength, "a query of at most " + std::to_string(kMaxQueryLength) +
                                " characters", "a longer text");
        WqlFilter filter;
        filter._query = _text;
        advance();
        expectKeyword("SELECT");
        if (_token.kind == TokenKind::Star) {
            advance();
        } else {
            for (;;) {
                filter._selectList.push_back(expectIdentifier("'*' or a property name"));
                if (_token.kind != TokenKind::Comma) break;
                advance();
            }
        }
        expectKeyword("FROM");
        filter._fromClass = expectIdentifier("an indication class name");
        if (isKeyword("WHERE")) {
            advance();
            std::size_t begin = _token.position;
            filter._condition = parseOr(0);
            std::size_t end = _token.kind == TokenKind::End ? _text.size() : _token.position;
            while (end > begin && std::isspace(static_cast<unsigned char>(_text[end - 1]))) --end;
            filter._conditionText = _text.substr(begin, end - begin);
        }
        if (_token.kind != TokenKind::End)
            fail(filter._condition ? "AND, OR or end of query" : "WHERE or end of query");
        return filter;
    }

private:
    using NodePtr = std::shared_ptr<const WqlFilter::Node>;

    [[noreturn]] void fail(const std::string& expected) {
        throw WqlParseError(_token.position, expected, describe(_token));
    }

    bool isKeyword(const char* word) const {
        return _token.kind == TokenKind::Identifier && equalNoCase(_token.text, word);
    }

    void expectKeyword(const char* word) {
        if (!isKeyword(word)) fail(word);
        advance();
    }

    std::string expectIdentifier(const std::string& what) {
        if (_token.kind != TokenKind::Identifier || isReserved(_token.text)) fail(what);
        std::string name = _token.text;
        advance();
        return name;
    }

    static bool isReserved(const std::string& word) {
        static const char* const words[] = {"SELECT", "FROM", "WHERE", "AND", "OR", "NOT", "IS", "ISA",
                                            "NULL", "TRUE", "FALSE"};
        for (const char* w : words)
            if (equalNoCase(word, w)) return true;
        return false;
    }

    void checkDepth(int depth) {
        if (depth > kMaxNesting)
            fail("a condition nested at most " + std::to_string(kMaxNesting) + " levels deep");
    }

    NodePtr parseOr(int depth) {
        checkDepth(depth);
        NodePtr left = parseAnd(depth);
        while (isKeyword("OR")) {
            advance();
            auto node = std::make_shared<WqlFilter::Node>();
            node->kind = WqlFilter::Node::Or;
            node->left = left;
            node->right = parseAnd(depth);
            left = node;
        }
        return left;
    }

    NodePtr parseAnd(int depth) {
        NodePtr left = parseNot(depth);
        while (isKeyword("AND")) {
            advance();
            auto node = std::make_shared<WqlFilter::Node>();
            node->kind = WqlFilter::Node::And;
            node->left = left;
            node->right = parseNot(depth);
            left = node;
        }
        return left;
    }

    NodePtr parseNot(int depth) {
        if (isKeyword("NOT")) {
            checkDepth(depth + 1);
            advance();
            auto node = std::make_shared<WqlFilter::Node>();
            node->kind = WqlFilter::Node::Not;
            node->left = parseNot(depth + 1);
            return node;
        }
        return parsePrimary(depth);
    }

    NodePtr parsePrimary(int depth) {
        if (_token.kind == TokenKind::LParen) {
            advance();
            NodePtr inner = parseOr(depth + 1);
            if (_token.kind != TokenKind::RParen) fail("')', AND or OR");
            advance();
            return inner;
        }
        auto node = std::make_shared<WqlFilter::Node>();
        node->a = parseOperand();
        if (isKeyword("IS")) {
            advance();
            node->kind = WqlFilter::Node::IsNull;
            if (isKeyword("NOT")) {
                node->negated = true;
                advance();
            }
            expectKeyword("NULL");
            return node;
        }
        if (isKeyword("ISA")) {
            if (!node->a.isProperty) fail("a property before ISA");
            advance();
            node->kind = WqlFilter::Node::Isa;
            if (_token.kind == TokenKind::String) {
                node->className = _token.text;
                advance();
            } else {
                node->className = expectIdentifier("a class name after ISA");
            }
            return node;
        }
        if (_token.kind != TokenKind::Operator) fail("a comparison operator, IS or ISA");
        const std::string op = _token.text;
        if (op == "=") node->op = CompareOp::Eq;
        else if (op == "<>" || op == "!=") node->op = CompareOp::Ne;
        else if (op == "<") node->op = CompareOp::Lt;
        else if (op == "<=") node->op = CompareOp::Le;
        else if (op == ">") node->op = CompareOp::Gt;
        else node->op = CompareOp::Ge;
        advance();
        node->kind = WqlFilter::Node::Compare;
        node->b = parseOperand();
        return node;
    }

    Operand parseOperand() {
        Operand operand;
        switch (_token.kind) {
        case TokenKind::String:
            operand.literal.kind = Value::Str;
            operand.literal.str = _token.text;
            advance();
            return operand;
        case TokenKind::Number: {
            errno = 0;
            char* end = nullptr;
            const long double n = std::strtold(_token.text.c_str(), &end);
            if (errno == ERANGE || end == nullptr || *end != '\0') fail("a number in range");
            operand.literal.kind = Value::Num;
            operand.literal.num = n;
            advance();
            return operand;
        }
        case TokenKind::Identifier:
            if (isKeyword("NULL")) {
                advance();
                return operand;   // Value::Null
            }
            if (isKeyword("TRUE") || isKeyword("FALSE")) {
                operand.literal.kind = Value::Bool;
                operand.literal.boolean = isKeyword("TRUE");
                advance();
                return operand;
            }
            operand.isProperty = true;
            operand.path.push_back(expectIdentifier("a property name or a literal"));
            while (_token.kind == TokenKind::Dot) {
                advance();
                operand.path.push_back(expectIdentifier("a property name after '.'"));
            }
            return operand;
        default:
            fail("a property name or a literal");
        }
    }

    // ------------------------------------------------------------ lexer

    void advance() {
        const std::string& s = _text;
        while (_pos < s.size() && std::isspace(static_cast<unsigned char>(s[_pos]))) ++_pos;
        _token = Token();
        _token.position = _pos;
        if (_pos >= s.size()) return;
        const char c = s[_pos];
        if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') {
            std::size_t end = _pos + 1;
            while (end < s.size() && (std::isalnum(static_cast<unsigned char>(s[end])) || s[end] == '_')) ++end;
            _token.kind = TokenKind::Identifier;
            _token.text = s.substr(_pos, end - _pos);
            _pos = end;
            return;
        }
        const bool signedNumber = (c == '-' || c == '+') && _pos + 1 < s.size() &&
                                  (std::isdigit(static_cast<unsigned char>(s[_pos + 1])) || s[_pos + 1] == '.');
        if (std::isdigit(static_cast<unsigned char>(c)) || signedNumber ||
            (c == '.' && _pos + 1 < s.size() && std::isdigit(static_cast<unsigned char>(s[_pos + 1])))) {
            lexNumber();
            return;
        }
        if (c == '\'' || c == '"') {
            lexString(c);
            return;
        }
        _token.text = std::string(1, c);
        ++_pos;
        switch (c) {
        case '(': _token.kind = TokenKind::LParen; return;
        case ')': _token.kind = TokenKind::RParen; return;
        case ',': _token.kind = TokenKind::Comma; return;
        case '.': _token.kind = TokenKind::Dot; return;
        case '*': _token.kind = TokenKind::Star; return;
        case '=': _token.kind = TokenKind::Operator; return;
        case '<':
        case '>':
        case '!':
            _token.kind = TokenKind::Operator;
            if (_pos < s.size() && (s[_pos] == '=' || (c == '<' && s[_pos] == '>'))) _token.text += s[_pos++];
            if (_token.text == "!")
                throw WqlParseError(_token.position, "a comparison operator", "'!'");
            return;
        default:
            throw WqlParseError(_token.position, "a name, a literal, an operator or a parenthesis",
                                "the character '" + _token.text + "'");
        }
    }

    void lexNumber() {
        const std::string& s = _text;
        std::size_t end = _pos;
        if (s[end] == '-' || s[end] == '+') ++end;
        auto digits = [&] {
            std::size_t begin = end;
            while (end < s.size() && std::isdigit(static_cast<unsigned char>(s[end]))) ++end;
            return end > begin;
        };
        bool any = digits();
        if (end < s.size() && s[end] == '.') {
            ++end;
            any = digits() || any;
        }
        if (!any) throw WqlParseError(_pos, "a number", "'" + s.substr(_pos, end - _pos) + "'");
        if (end < s.size() && (s[end] == 'e' || s[end] == 'E')) {
            ++end;
            if (end < s.size() && (s[end] == '-' || s[end] == '+')) ++end;
            if (!digits()) throw WqlParseError(end, "the digits of an exponent", describeAt(end));
        }
        if (end < s.size() && (std::isalpha(static_cast<unsigned char>(s[end])) || s[end] == '_'))
            throw WqlParseError(end, "a blank or an operator after a number", describeAt(end));
        _token.kind = TokenKind::Number;
        _token.text = s.substr(_pos, end - _pos);
        _pos = end;
    }

    void lexString(char quote) {
        const std::string& s = _text;
        std::string value;
        std::size_t i = _pos + 1;
        for (;;) {
            if (i >= s.size())
                throw WqlParseError(_token.position, std::string("a closing ") + quote + " for the string",
                                    "end of query");
            const char c = s[i];
            if (c == '\\' && i + 1 < s.size()) {
                value += s[i + 1];
                i += 2;
                continue;
            }
            if (c == quote) {
                if (i + 1 < s.size() && s[i + 1] == quote) {   // doubled quote
                    value += quote;
                    i += 2;
                    continue;
                }
                ++i;
                break;
            }
            value += c;
            ++i;
        }
        _token.kind = TokenKind::String;
        _token.text = value;
        _pos = i;
    }

    std::string describeAt(std::size_t at) const {
        if (at >= _text.size()) return "end of query";
        return "'" + std::string(1, _text[at]) + "'";
    }

    const std::string& _text;
    std::size_t _pos = 0;
    Token _token;
};

// ---------------------------------------------------------------- filter

namespace {

Value resolve(const CIMInstance& indication, const Operand& operand) {
    if (!operand.isProperty) return operand.literal;
    Value current;
    current.kind = Value::Inst;
    current.instance = indication;
    for (const std::string& name : operand.path) {
        if (current.kind != Value::Inst || current.instance.isUninitialized()) {
            Value other;
            other.kind = Value::Other;
            return other;
        }
        const Uint32 index = current.instance.findProperty(CIMName(String::fromUtf8(name)));
        if (index == PEG_NOT_FOUND) return Value();   // a missing property is NULL
        current = fromCIMValue(current.instance.getProperty(index).getValue());
    }
    return current;
}

Tri evaluateNode(const WqlFilter::Node& node, const CIMInstance& indication, const WqlFilter::IsaFunction& isa) {
    switch (node.kind) {
    case WqlFilter::Node::And: {
        const Tri l = evaluateNode(*node.left, indication, isa);
        if (l == Tri::False) return Tri::False;
        const Tri r = evaluateNode(*node.right, indication, isa);
        if (r == Tri::False) return Tri::False;
        return (l == Tri::True && r == Tri::True) ? Tri::True : Tri::Unknown;
    }
    case WqlFilter::Node::Or: {
        const Tri l = evaluateNode(*node.left, indication, isa);
        if (l == Tri::True) return Tri::True;
        const Tri r = evaluateNode(*node.right, indication, isa);
        if (r == Tri::True) return Tri::True;
        return (l == Tri::False && r == Tri::False) ? Tri::False : Tri::Unknown;
    }
    case WqlFilter::Node::Not: return triNot(evaluateNode(*node.left, indication, isa));
    case WqlFilter::Node::IsNull: {
        const bool isNull = resolve(indication, node.a).kind == Value::Null;
        return (isNull != node.negated) ? Tri::True : Tri::False;
    }
    case WqlFilter::Node::Isa: {
        const Value v = resolve(indication, node.a);
        if (v.kind == Value::Null) return Tri::Unknown;
        if (v.kind != Value::Inst || v.instance.isUninitialized()) return Tri::False;
        const std::string cls = v.instance.getClassName().getString().toUtf8();
        const bool yes = isa ? isa(cls, node.className) : equalNoCase(cls, node.className);
        return yes ? Tri::True : Tri::False;
    }
    case WqlFilter::Node::Compare:
        return compareValues(resolve(indication, node.a), resolve(indication, node.b), node.op);
    }
    return Tri::Unknown;
}

void collectProperties(const WqlFilter::Node* node, std::vector<std::string>& out) {
    if (node == nullptr) return;
    auto add = [&out](const Operand& operand) {
        if (!operand.isProperty) return;
        for (const std::string& known : out)
            if (equalNoCase(known, operand.path[0])) return;
        out.push_back(operand.path[0]);
    };
    switch (node->kind) {
    case WqlFilter::Node::And:
    case WqlFilter::Node::Or:
        collectProperties(node->left.get(), out);
        collectProperties(node->right.get(), out);
        return;
    case WqlFilter::Node::Not: collectProperties(node->left.get(), out); return;
    case WqlFilter::Node::Compare: add(node->a); add(node->b); return;
    case WqlFilter::Node::IsNull:
    case WqlFilter::Node::Isa: add(node->a); return;
    }
}

} // namespace

WqlFilter::~WqlFilter() = default;

WqlFilter WqlFilter::parse(const std::string& query) { return WqlParser(query).parse(); }

bool WqlFilter::isSupportedLanguage(const std::string& queryLanguage) {
    return equalNoCase(queryLanguage, "WQL") || equalNoCase(queryLanguage, "DMTF:CQL") ||
           equalNoCase(queryLanguage, "CIM:CQL");
}

std::vector<std::string> WqlFilter::referencedProperties() const {
    std::vector<std::string> out;
    for (const std::string& name : _selectList) {
        bool known = false;
        for (const std::string& k : out) known = known || equalNoCase(k, name);
        if (!known) out.push_back(name);
    }
    collectProperties(_condition.get(), out);
    return out;
}

bool WqlFilter::evaluate(const CIMInstance& indication, const IsaFunction& isa) const {
    if (!_condition) return true;
    if (indication.isUninitialized()) return false;
    return evaluateNode(*_condition, indication, isa) == Tri::True;
}

CIMInstance WqlFilter::project(const CIMInstance& indication) const {
    CIMInstance out = indication.clone();
    if (_selectList.empty()) return out;
    for (Uint32 i = out.getPropertyCount(); i-- > 0;) {
        const std::string name = out.getProperty(i).getName().getString().toUtf8();
        bool selected = false;
        for (const std::string& s : _selectList) selected = selected || equalNoCase(s, name);
        if (!selected) out.removeProperty(i);
    }
    return out;
}

} // namespace Pegasus
