#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/XmlWriter.h>

#include <cstdio>
#include <variant>

PEGASUS_NAMESPACE_BEGIN

typedef std::variant<std::monostate, Boolean, Uint8, Sint8, Uint16, Sint16, Uint32, Sint32, Uint64,
                     Sint64, Real32, Real64, Char16, String, CIMDateTime, CIMObjectPath, CIMObject,
                     CIMInstance, Array<Boolean>, Array<Uint8>, Array<Sint8>, Array<Uint16>,
                     Array<Sint16>, Array<Uint32>, Array<Sint32>, Array<Uint64>, Array<Sint64>,
                     Array<Real32>, Array<Real64>, Array<Char16>, Array<String>, Array<CIMDateTime>,
                     Array<CIMObjectPath>, Array<CIMObject>, Array<CIMInstance>>
    ValueData;

struct CIMValueRep {
    CIMType type = CIMTYPE_BOOLEAN;
    bool isArray = false;
    Uint32 arraySize = 0;  // of a typed null array
    ValueData data;        // monostate when null
};

namespace {

template <class T> struct TypeOf;
#define PEGASUS_VALUE_TYPE(T, TYPE) \
    template <> struct TypeOf<T> { static const CIMType value = TYPE; };
PEGASUS_VALUE_TYPE(Boolean, CIMTYPE_BOOLEAN)
PEGASUS_VALUE_TYPE(Uint8, CIMTYPE_UINT8)
PEGASUS_VALUE_TYPE(Sint8, CIMTYPE_SINT8)
PEGASUS_VALUE_TYPE(Uint16, CIMTYPE_UINT16)
PEGASUS_VALUE_TYPE(Sint16, CIMTYPE_SINT16)
PEGASUS_VALUE_TYPE(Uint32, CIMTYPE_UINT32)
PEGASUS_VALUE_TYPE(Sint32, CIMTYPE_SINT32)
PEGASUS_VALUE_TYPE(Uint64, CIMTYPE_UINT64)
PEGASUS_VALUE_TYPE(Sint64, CIMTYPE_SINT64)
PEGASUS_VALUE_TYPE(Real32, CIMTYPE_REAL32)
PEGASUS_VALUE_TYPE(Real64, CIMTYPE_REAL64)
PEGASUS_VALUE_TYPE(Char16, CIMTYPE_CHAR16)
PEGASUS_VALUE_TYPE(String, CIMTYPE_STRING)
PEGASUS_VALUE_TYPE(CIMDateTime, CIMTYPE_DATETIME)
PEGASUS_VALUE_TYPE(CIMObjectPath, CIMTYPE_REFERENCE)
PEGASUS_VALUE_TYPE(CIMObject, CIMTYPE_OBJECT)
PEGASUS_VALUE_TYPE(CIMInstance, CIMTYPE_INSTANCE)
#undef PEGASUS_VALUE_TYPE

// Embedded objects are copied in, so that a value never shares an object
// with its caller.
template <class T> T own(const T& x) { return x; }
CIMObject own(const CIMObject& x) {
    if (x.isUninitialized()) throw UninitializedObjectException();
    return x.clone();
}
CIMInstance own(const CIMInstance& x) {
    if (x.isUninitialized()) throw UninitializedObjectException();
    return x.clone();
}
template <class T> Array<T> own(const Array<T>& x) { return x; }
Array<CIMObject> own(const Array<CIMObject>& x) {
    Array<CIMObject> copy;
    copy.reserveCapacity(x.size());
    for (Uint32 i = 0; i < x.size(); ++i) copy.append(own(x[i]));
    return copy;
}
Array<CIMInstance> own(const Array<CIMInstance>& x) {
    Array<CIMInstance> copy;
    copy.reserveCapacity(x.size());
    for (Uint32 i = 0; i < x.size(); ++i) copy.append(own(x[i]));
    return copy;
}

template <class T>
std::shared_ptr<const CIMValueRep> makeScalar(const T& x) {
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = TypeOf<T>::value;
    rep->data.template emplace<T>(own(x));
    return rep;
}

template <class T>
std::shared_ptr<const CIMValueRep> makeArray(const Array<T>& x) {
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = TypeOf<T>::value;
    rep->isArray = true;
    rep->arraySize = x.size();
    rep->data.template emplace<Array<T>>(own(x));
    return rep;
}

const std::shared_ptr<const CIMValueRep>& nullRep() {
    static const std::shared_ptr<const CIMValueRep> rep = std::make_shared<CIMValueRep>();
    return rep;
}

template <class T>
void getScalar(const CIMValueRep& rep, T& x) {
    if (rep.type != TypeOf<T>::value || rep.isArray) throw TypeMismatchException();
    if (const T* value = std::get_if<T>(&rep.data)) x = *value;
}

template <class T>
void getArray(const CIMValueRep& rep, Array<T>& x) {
    if (rep.type != TypeOf<T>::value || !rep.isArray) throw TypeMismatchException();
    if (const Array<T>* value = std::get_if<Array<T>>(&rep.data)) x = *value;
}

void appendScalar(std::string& out, const std::monostate&) { (void)out; }
void appendScalar(std::string& out, Boolean x) { out += x ? "TRUE" : "FALSE"; }
template <class I>
void appendInteger(std::string& out, I x, const char* format) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, format, x);
    out += buffer;
}
void appendScalar(std::string& out, Uint8 x) { appendInteger(out, unsigned(x), "%u"); }
void appendScalar(std::string& out, Sint8 x) { appendInteger(out, int(x), "%d"); }
void appendScalar(std::string& out, Uint16 x) { appendInteger(out, unsigned(x), "%u"); }
void appendScalar(std::string& out, Sint16 x) { appendInteger(out, int(x), "%d"); }
void appendScalar(std::string& out, Uint32 x) { appendInteger(out, x, "%u"); }
void appendScalar(std::string& out, Sint32 x) { appendInteger(out, x, "%d"); }
void appendScalar(std::string& out, Uint64 x) { appendInteger(out, x, "%llu"); }
void appendScalar(std::string& out, Sint64 x) { appendInteger(out, x, "%lld"); }
void appendScalar(std::string& out, Real32 x) { appendInteger(out, double(x), "%.7e"); }
void appendScalar(std::string& out, Real64 x) { appendInteger(out, x, "%.16e"); }
void appendScalar(std::string& out, const Char16& x) {
    Char16 text[2] = {x, Char16(0)};
    out += String(text, 1).toUtf8();
}
void appendScalar(std::string& out, const String& x) { out += x.toUtf8(); }
void appendScalar(std::string& out, const CIMDateTime& x) { out += x.toString().toUtf8(); }
void appendScalar(std::string& out, const CIMObjectPath& x) { out += x.toString().toUtf8(); }
void appendScalar(std::string& out, const CIMObject& x) { XmlWriter::appendObjectElement(out, x); }
void appendScalar(std::string& out, const CIMInstance& x) { XmlWriter::appendInstanceElement(out, x); }
template <class T>
void appendScalar(std::string& out, const Array<T>& x) {
    for (Uint32 i = 0; i < x.size(); ++i) {
        appendScalar(out, x[i]);
        out += ' ';
    }
}

template <class T> bool same(const T& a, const T& b) { return a == b; }
bool same(const std::monostate&, const std::monostate&) { return true; }
bool same(const CIMObject& a, const CIMObject& b) { return a.identical(b); }
bool same(const CIMInstance& a, const CIMInstance& b) { return a.identical(b); }
template <class T>
bool same(const Array<T>& a, const Array<T>& b) {
    if (a.size() != b.size()) return false;
    for (Uint32 i = 0; i < a.size(); ++i) {
        if (!same(a[i], b[i])) return false;
    }
    return true;
}

}  // namespace

CIMValue::CIMValue() : _rep(nullRep()) {}
CIMValue::CIMValue(CIMType type, Boolean isArray, Uint32 arraySize) { setNullValue(type, isArray, arraySize); }
CIMValue::CIMValue(const CIMValue& x) = default;
CIMValue::~CIMValue() {}
CIMValue& CIMValue::operator=(const CIMValue& x) = default;
void CIMValue::assign(const CIMValue& x) { _rep = x._rep; }
void CIMValue::clear() { _rep = nullRep(); }

#define PEGASUS_VALUE_MEMBERS(T)                                                         \
    CIMValue::CIMValue(T x) : _rep(makeScalar(x)) {}                                   \
    CIMValue::CIMValue(const Array<T>& x) : _rep(makeArray(x)) {}                      \
    void CIMValue::set(T x) { _rep = makeScalar(x); }                                  \
    void CIMValue::set(const Array<T>& x) { _rep = makeArray(x); }                     \
    void CIMValue::get(T& x) const { getScalar(*_rep, x); }                            \
    void CIMValue::get(Array<T>& x) const { getArray(*_rep, x); }
#define PEGASUS_VALUE_MEMBERS_REF(T)                                                     \
    CIMValue::CIMValue(const T& x) : _rep(makeScalar(x)) {}                            \
    CIMValue::CIMValue(const Array<T>& x) : _rep(makeArray(x)) {}                      \
    void CIMValue::set(const T& x) { _rep = makeScalar(x); }                           \
    void CIMValue::set(const Array<T>& x) { _rep = makeArray(x); }                     \
    void CIMValue::get(T& x) const { getScalar(*_rep, x); }                            \
    void CIMValue::get(Array<T>& x) const { getArray(*_rep, x); }

PEGASUS_VALUE_MEMBERS(Boolean)
PEGASUS_VALUE_MEMBERS(Uint8)
PEGASUS_VALUE_MEMBERS(Sint8)
PEGASUS_VALUE_MEMBERS(Uint16)
PEGASUS_VALUE_MEMBERS(Sint16)
PEGASUS_VALUE_MEMBERS(Uint32)
PEGASUS_VALUE_MEMBERS(Sint32)
PEGASUS_VALUE_MEMBERS(Uint64)
PEGASUS_VALUE_MEMBERS(Sint64)
PEGASUS_VALUE_MEMBERS(Real32)
PEGASUS_VALUE_MEMBERS(Real64)
PEGASUS_VALUE_MEMBERS_REF(Char16)
PEGASUS_VALUE_MEMBERS_REF(String)
PEGASUS_VALUE_MEMBERS_REF(CIMDateTime)
PEGASUS_VALUE_MEMBERS_REF(CIMObjectPath)
PEGASUS_VALUE_MEMBERS_REF(CIMObject)
PEGASUS_VALUE_MEMBERS_REF(CIMInstance)
#undef PEGASUS_VALUE_MEMBERS
#undef PEGASUS_VALUE_MEMBERS_REF

Boolean CIMValue::typeCompatible(const CIMValue& x) const {
    return _rep->type == x._rep->type && _rep->isArray == x._rep->isArray;
}
Boolean CIMValue::isArray() const { return _rep->isArray; }
Boolean CIMValue::isNull() const { return std::holds_alternative<std::monostate>(_rep->data); }
Uint32 CIMValue::getArraySize() const { return _rep->isArray ? _rep->arraySize : 0; }
CIMType CIMValue::getType() const { return _rep->type; }

void CIMValue::setNullValue(CIMType type, Boolean isArray, Uint32 arraySize) {
    if (unsigned(type) > unsigned(CIMTYPE_INSTANCE)) throw TypeMismatchException("unknown CIM type");
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = type;
    rep->isArray = isArray;
    rep->arraySize = isArray ? arraySize : 0;
    _rep = rep;
}

Boolean CIMValue::equal(const CIMValue& x) const {
    if (_rep == x._rep) return true;
    if (!typeCompatible(x) || isNull() != x.isNull()) return false;
    if (_rep->data.index() != x._rep->data.index()) return false;
    return std::visit(
        [&](const auto& a) {
            using T = std::decay_t<decltype(a)>;
            return same(a, std::get<T>(x._rep->data));
        },
        _rep->data);
}

String CIMValue::toString() const {
    std::string out;
    std::visit([&](const auto& a) { appendScalar(out, a); }, _rep->data);
    return String::fromUtf8(out);
}

Boolean operator==(const CIMValue& x, const CIMValue& y) { return x.equal(y); }
Boolean operator!=(const CIMValue& x, const CIMValue& y) { return !x.equal(y); }

PEGASUS_NAMESPACE_END
