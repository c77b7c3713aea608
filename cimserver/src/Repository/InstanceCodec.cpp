#include <Pegasus/Repository/InstanceCodec.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/NameDictionary.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace Pegasus {

namespace {

// Embedded instances nest; deeper data is refused as damaged.
const int MAX_DEPTH = 32;
// Bound of the per-thread cache of decoded names (first format).
const size_t MAX_CACHED_NAMES = 4096;
// Strings up to this length are looked up among the dictionary's names.
const size_t MAX_NAME_LOOKUP = 64;

// How a stored instance keeps its path.
enum PathForm : unsigned char {
    NO_PATH = 0,
    KEY_PROPERTIES = 1,  // bindings made from the listed key properties
    EXPLICIT_PATH = 2,
};

// Value header: the type in the low five bits.
const unsigned char ARRAY_FLAG = 0x20;
const unsigned char NULL_FLAG = 0x40;
const unsigned char TYPE_MASK = 0x1f;

[[noreturn]] void damaged(const char* what)
{
    throw CIMException(CIM_ERR_FAILED, String("stored instance is damaged: ") + String(what));
}

Uint64 zigzag(Sint64 v)
{
    return (Uint64(v) << 1) ^ Uint64(v >> 63);
}

Sint64 unzigzag(Uint64 v)
{
    return Sint64(v >> 1) ^ -Sint64(v & 1);
}

class Writer {
public:
    Writer(std::string& out, NameDictionary& names) : _out(out), _names(names) {}

    void byte(unsigned char b) { _out.push_back(char(b)); }
    void varint(Uint64 v)
    {
        while (v >= 0x80) {
            _out.push_back(char((v & 0x7f) | 0x80));
            v >>= 7;
        }
        _out.push_back(char(v));
    }
    void raw(const void* p, size_t n) { _out.append(static_cast<const char*>(p), n); }

    // UTF-8; a lone surrogate is kept as its three-byte form, so that every
    // String comes back unchanged.
    void utf8(const std::u16string& u)
    {
        size_t start = _out.size();
        size_t n = u.size();
        _out.resize(start + 3 * n + 10);
        char* base = &_out[0];
        // The length goes in front; at most 5 bytes, fixed up below.
        size_t p = start + 5;
        for (size_t i = 0; i < n; ++i) {
            char32_t c = u[i];
            if (c < 0x80) {
                base[p++] = char(c);
            } else if (c < 0x800) {
                base[p++] = char(0xc0 | (c >> 6));
                base[p++] = char(0x80 | (c & 0x3f));
            } else if (c >= 0xd800 && c < 0xdc00 && i + 1 < n && u[i + 1] >= 0xdc00 &&
                       u[i + 1] < 0xe000) {
                char32_t cp = 0x10000 + ((c - 0xd800) << 10) + (u[i + 1] - 0xdc00);
                ++i;
                base[p++] = char(0xf0 | (cp >> 18));
                base[p++] = char(0x80 | ((cp >> 12) & 0x3f));
                base[p++] = char(0x80 | ((cp >> 6) & 0x3f));
                base[p++] = char(0x80 | (cp & 0x3f));
            } else {
                base[p++] = char(0xe0 | (c >> 12));
                base[p++] = char(0x80 | ((c >> 6) & 0x3f));
                base[p++] = char(0x80 | (c & 0x3f));
            }
        }
        size_t bytes = p - (start + 5);
        // Length as (bytes << 1): the low bit clear marks inline text.
        char header[10];
        size_t h = 0;
        Uint64 v = Uint64(bytes) << 1;
        while (v >= 0x80) {
            header[h++] = char((v & 0x7f) | 0x80);
            v >>= 7;
        }
        header[h++] = char(v);
        std::memmove(base + start + h, base + start + 5, bytes);
        std::memcpy(base + start, header, h);
        _out.resize(start + h + bytes);
    }
    void string(const String& s)
    {
        if (s.size() > 0 && s.size() <= MAX_NAME_LOOKUP) {
            if (Uint32 id = _names.knownNameId(s)) {
                varint((Uint64(id) << 1) | 1);
                return;
            }
        }
        utf8(s.u16());
    }
    void name(const CIMName& n) { varint(_names.nameId(n.getString())); }

    void path(const CIMObjectPath& p)
    {
        utf8(p.getHost().u16());
        varint(_names.nameId(p.getNameSpace().getString()));
        name(p.getClassName());
        const Array<CIMKeyBinding>& keys = p.getKeyBindings();
        varint(keys.size());
        for (const CIMKeyBinding& kb : keys) {
            name(kb.getName());
            byte(static_cast<unsigned char>(kb.getType()));
            string(kb.getValue());
        }
    }

    // The positions of the key properties the path is made of, or false when
    // the path is anything else.
    static bool keyPositions(const CIMConstInstance& inst, std::vector<Uint32>& positions)
    {
        const CIMObjectPath& p = inst.getPath();
        if (p.getHost().size() != 0 || !p.getNameSpace().isNull() ||
            !String::equal(p.getClassName().getString(), inst.getClassName().getString()))
            return false;
        const Array<CIMKeyBinding>& keys = p.getKeyBindings();
        for (const CIMKeyBinding& kb : keys) {
            Uint32 index = inst.findProperty(kb.getName());
            if (index == PEG_NOT_FOUND)
                return false;
            CIMConstProperty prop = inst.getProperty(index);
            if (!String::equal(prop.getName().getString(), kb.getName().getString()))
                return false;
            const CIMValue& v = prop.getValue();
            if (v.isNull() || v.isArray() || v.getType() == CIMTYPE_OBJECT ||
                v.getType() == CIMTYPE_INSTANCE)
                return false;
            CIMKeyBinding made(prop.getName(), v);
            if (made.getType() != kb.getType() || !String::equal(made.getValue(), kb.getValue()))
                return false;
            positions.push_back(index);
        }
        return true;
    }

    void instance(const CIMConstInstance& inst, int depth)
    {
        if (depth > MAX_DEPTH)
            throw CIMException(CIM_ERR_FAILED, "embedded instances nest too deeply to be stored");
        name(inst.getClassName());
        const CIMObjectPath& p = inst.getPath();
        std::vector<Uint32> positions;
        if (p.getClassName().isNull() && p.getKeyBindings().size() == 0 && p.getHost().size() == 0 &&
            p.getNameSpace().isNull()) {
            byte(NO_PATH);
        } else if (keyPositions(inst, positions)) {
            byte(KEY_PROPERTIES);
            varint(positions.size());
            for (Uint32 position : positions)
                varint(position);
        } else {
            byte(EXPLICIT_PATH);
            path(p);
        }
        Uint32 count = inst.getPropertyCount();
        varint(count);
        for (Uint32 i = 0; i < count; ++i) {
            CIMConstProperty prop = inst.getProperty(i);
            varint(_names.propertyId(prop));
            value(prop.getValue(), depth);
        }
    }

    template <class T> void fixed(const CIMValue& v)
    {
        if (v.isArray()) {
            Array<T> a;
            v.get(a);
            varint(a.size());
            raw(a.getData(), sizeof(T) * a.size());
        } else {
            T x;
            v.get(x);
            raw(&x, sizeof(T));
        }
    }

    template <class T, class F> void each(const CIMValue& v, F f)
    {
        if (v.isArray()) {
            Array<T> a;
            v.get(a);
            varint(a.size());
            for (const T& x : a)
                f(x);
        } else {
            T x;
            v.get(x);
            f(x);
        }
    }

    void value(const CIMValue& v, int depth)
    {
        unsigned char header = static_cast<unsigned char>(v.getType());
        if (v.isArray())
            header |= ARRAY_FLAG;
        if (v.isNull())
            header |= NULL_FLAG;
        byte(header);
        if (v.isNull()) {
            if (v.isArray())
                varint(v.getArraySize());
            return;
        }
        switch (v.getType()) {
        case CIMTYPE_BOOLEAN:
            each<Boolean>(v, [this](Boolean b) { byte(b ? 1 : 0); });
            break;
        case CIMTYPE_UINT8: fixed<Uint8>(v); break;
        case CIMTYPE_SINT8: fixed<Sint8>(v); break;
        case CIMTYPE_UINT16: each<Uint16>(v, [this](Uint16 x) { varint(x); }); break;
        case CIMTYPE_SINT16: each<Sint16>(v, [this](Sint16 x) { varint(zigzag(x)); }); break;
        case CIMTYPE_UINT32: each<Uint32>(v, [this](Uint32 x) { varint(x); }); break;
        case CIMTYPE_SINT32: each<Sint32>(v, [this](Sint32 x) { varint(zigzag(x)); }); break;
        case CIMTYPE_UINT64: each<Uint64>(v, [this](Uint64 x) { varint(x); }); break;
        case CIMTYPE_SINT64: each<Sint64>(v, [this](Sint64 x) { varint(zigzag(x)); }); break;
        case CIMTYPE_REAL32: fixed<Real32>(v); break;
        case CIMTYPE_REAL64: fixed<Real64>(v); break;
        case CIMTYPE_CHAR16:
            each<Char16>(v, [this](const Char16& c) { varint(Uint16(c)); });
            break;
        case CIMTYPE_STRING:
            each<String>(v, [this](const String& s) { string(s); });
            break;
        case CIMTYPE_DATETIME:
            each<CIMDateTime>(v, [this](const CIMDateTime& d) { utf8(d.toString().u16()); });
            break;
        case CIMTYPE_REFERENCE:
            each<CIMObjectPath>(v, [this](const CIMObjectPath& p) { path(p); });
            break;
        case CIMTYPE_OBJECT:
            each<CIMObject>(v, [this, depth](const CIMObject& o) {
                instance(CIMConstInstance(o), depth + 1);
            });
            break;
        case CIMTYPE_INSTANCE:
            each<CIMInstance>(v, [this, depth](const CIMInstance& o) {
                instance(CIMConstInstance(o), depth + 1);
            });
            break;
        }
    }

private:
    std::string& _out;
    NameDictionary& _names;
};

// Byte-level reading shared by the current blob layout and the first one:
// every read is bounds checked, and a short or inconsistent blob is reported
// as damaged rather than read past its end.
class ByteReader {
public:
    ByteReader(const char* data, size_t size) : _p(data), _end(data + size) {}

    unsigned char byte()
    {
        if (_p >= _end)
            damaged("unexpected end of data");
        return static_cast<unsigned char>(*_p++);
    }
    Uint64 varint()
    {
        if (_p < _end && !(*_p & 0x80))
            return static_cast<unsigned char>(*_p++);
        Uint64 v = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            unsigned char b = byte();
            v |= Uint64(b & 0x7f) << shift;
            if (!(b & 0x80))
                return v;
        }
        damaged("bad length");
    }
    // A count of items each taking at least minBytesEach bytes: a count the
    // remaining data cannot hold is damage, caught before anything is reserved.
    Uint32 count(size_t minBytesEach)
    {
        Uint64 n = varint();
        if (n > 0xffffffffu || (minBytesEach && n > Uint64(_end - _p) / minBytesEach))
            damaged("count exceeds the data");
        return Uint32(n);
    }
    void raw(void* out, size_t n)
    {
        if (size_t(_end - _p) < n)
            damaged("unexpected end of data");
        std::memcpy(out, _p, n);
        _p += n;
    }
    void skipBytes(size_t n)
    {
        if (size_t(_end - _p) < n)
            damaged("unexpected end of data");
        _p += n;
    }

    // A value of a fixed-width type, or an array of them stored back to back.
    template <class T> CIMValue fixed(bool isArray)
    {
        if (isArray) {
            Uint32 n = count(sizeof(T));
            Array<T> a(n);
            if (n)
                std::memcpy(const_cast<T*>(a.getData()), _p, size_t(n) * sizeof(T));
            _p += size_t(n) * sizeof(T);
            return CIMValue(a);
        }
        T x;
        raw(&x, sizeof(T));
        return CIMValue(x);
    }

    // A value read by f, or an array of them; each element takes at least
    // minBytes bytes.
    template <class T, class F> CIMValue each(bool isArray, size_t minBytes, F f)
    {
        if (isArray) {
            Uint32 n = count(minBytes);
            Array<T> a;
            a.reserveCapacity(n);
            for (Uint32 i = 0; i < n; ++i)
                a.append(f());
            return CIMValue(a);
        }
        return CIMValue(f());
    }

    bool atEnd() const { return _p == _end; }

protected:
    const char* _p;
    const char* _end;
};

class Reader : public ByteReader {
public:
    Reader(const char* data, size_t size, const NameDictionary& names)
        : ByteReader(data, size), _names(names)
    {
    }

    Uint32 number()
    {
        Uint64 n = varint();
        if (n > 0xffffffffu)
            damaged("bad number");
        return Uint32(n);
    }

    // n bytes of UTF-8 into 16-bit units; malformed sequences are damage.
    const std::u16string& units(size_t n)
    {
        if (size_t(_end - _p) < n)
            damaged("unexpected end of data");
        thread_local std::u16string buffer;
        buffer.resize(n);
        char16_t* out = &buffer[0];
        const unsigned char* s = reinterpret_cast<const unsigned char*>(_p);
        const unsigned char* end = s + n;
        size_t k = 0;
        while (s < end) {
            unsigned char c = *s;
            if (c < 0x80) {
                out[k++] = c;
                ++s;
            } else if ((c & 0xe0) == 0xc0) {
                if (end - s < 2 || (s[1] & 0xc0) != 0x80 || c < 0xc2)
                    damaged("bad text");
                out[k++] = char16_t(((c & 0x1f) << 6) | (s[1] & 0x3f));
                s += 2;
            } else if ((c & 0xf0) == 0xe0) {
                if (end - s < 3 || (s[1] & 0xc0) != 0x80 || (s[2] & 0xc0) != 0x80)
                    damaged("bad text");
                char32_t cp = ((c & 0x0f) << 12) | ((s[1] & 0x3f) << 6) | (s[2] & 0x3f);
                if (cp < 0x800)
                    damaged("bad text");
                out[k++] = char16_t(cp);
                s += 3;
            } else if ((c & 0xf8) == 0xf0) {
                if (end - s < 4 || (s[1] & 0xc0) != 0x80 || (s[2] & 0xc0) != 0x80 ||
                    (s[3] & 0xc0) != 0x80)
                    damaged("bad text");
                char32_t cp = ((c & 0x07) << 18) | ((s[1] & 0x3f) << 12) | ((s[2] & 0x3f) << 6) |
                    (s[3] & 0x3f);
                if (cp < 0x10000 || cp > 0x10ffff)
                    damaged("bad text");
                cp -= 0x10000;
                out[k++] = char16_t(0xd800 + (cp >> 10));
                out[k++] = char16_t(0xdc00 + (cp & 0x3ff));
                s += 4;
            } else {
                damaged("bad text");
            }
        }
        _p += n;
        buffer.resize(k);
        return buffer;
    }
    String text()
    {
        Uint64 n = varint();
        if (n & 1)
            damaged("a name where text belongs");
        const std::u16string& u = units(size_t(n >> 1));
        return String(reinterpret_cast<const Char16*>(u.data()), Uint32(u.size()));
    }
    String string()
    {
        Uint64 n = varint();
        if (n & 1) {
            if ((n >> 1) > 0xffffffffu)
                damaged("bad number");
            return _names.text(Uint32(n >> 1));
        }
        const std::u16string& u = units(size_t(n >> 1));
        return String(reinterpret_cast<const Char16*>(u.data()), Uint32(u.size()));
    }
    void skipString()
    {
        Uint64 n = varint();
        if (n & 1)
            return;
        n >>= 1;
        if (Uint64(_end - _p) < n)
            damaged("unexpected end of data");
        _p += n;
    }
    const CIMName& name() { return _names.name(number()); }

    CIMObjectPath path()
    {
        String host = text();
        const String& ns = _names.text(number());
        const CIMName& cls = name();
        Uint32 n = count(3);
        Array<CIMKeyBinding> keys;
        keys.reserveCapacity(n);
        for (Uint32 i = 0; i < n; ++i) {
            const CIMName& keyName = name();
            unsigned char type = byte();
            if (type > CIMKeyBinding::REFERENCE)
                damaged("bad key type");
            keys.append(CIMKeyBinding(keyName, string(), CIMKeyBinding::Type(type)));
        }
        return CIMObjectPath(host, ns.size() ? CIMNamespaceName(ns) : CIMNamespaceName(), cls, keys);
    }

    struct PathPart {
        unsigned char form = NO_PATH;
        std::vector<Uint32> positions;
        CIMObjectPath path;
    };
    void pathPart(PathPart& part)
    {
        part.form = byte();
        if (part.form == KEY_PROPERTIES) {
            Uint32 n = count(1);
            part.positions.resize(n);
            for (Uint32 i = 0; i < n; ++i)
                part.positions[i] = number();
        } else if (part.form == EXPLICIT_PATH) {
            part.path = path();
        } else if (part.form != NO_PATH) {
            damaged("bad path form");
        }
    }
    CIMInstance instance(int depth, bool withClassOrigin = true,
        std::vector<InstanceCodec::KeyValue>* keyValues = nullptr)
    {
        if (depth > MAX_DEPTH)
            damaged("embedded instances nest too deeply");
        const CIMName& cls = name();
        if (cls.isNull())
            damaged("instance without class name");
        CIMInstance inst(cls);
        PathPart part;
        pathPart(part);
        Uint32 n = count(2);
        for (Uint32 i = 0; i < n; ++i) {
            const NameDictionary::PropertyShape& shape = _names.property(number());
            CIMValue v = value(depth);
            inst.addProperty(CIMProperty(shape.name, v, shape.arraySize, shape.referenceClass,
                withClassOrigin ? shape.origin : CIMName(), shape.propagated));
        }
        if (part.form == EXPLICIT_PATH) {
            inst.setPath(part.path);
        } else if (part.form == KEY_PROPERTIES) {
            Array<CIMKeyBinding> keys;
            keys.reserveCapacity(Uint32(part.positions.size()));
            const CIMInstance& decoded = inst;
            for (Uint32 position : part.positions) {
                if (position >= n)
                    damaged("bad key position");
                CIMConstProperty p = decoded.getProperty(position);
                keys.append(CIMKeyBinding(p.getName(), p.getValue()));
                if (keyValues)
                    keyValues->push_back(InstanceCodec::KeyValue{p.getName(), p.getValue()});
            }
            inst.setPath(CIMObjectPath(String(), CIMNamespaceName(), cls, keys));
        }
        return inst;
    }

    // The key values alone, the other values skipped; false when the path is
    // not made of key properties.
    bool keyValues(CIMName& className, PathPart& part, std::vector<InstanceCodec::KeyValue>& out)
    {
        const CIMName& cls = name();
        if (cls.isNull())
            damaged("instance without class name");
        className = cls;
        pathPart(part);
        if (part.form != KEY_PROPERTIES)
            return false;
        Uint32 n = count(2);
        Uint32 last = 0;
        for (Uint32 position : part.positions) {
            if (position >= n)
                damaged("bad key position");
            last = std::max(last, position);
        }
        out.resize(part.positions.size());
        for (Uint32 i = 0; i < n && !part.positions.empty() && i <= last; ++i) {
            const NameDictionary::PropertyShape& shape = _names.property(number());
            bool wanted = false;
            for (Uint32 position : part.positions)
                wanted = wanted || position == i;
            if (!wanted) {
                skipValue(0);
                continue;
            }
            CIMValue v = value(0);
            for (size_t k = 0; k < part.positions.size(); ++k) {
                if (part.positions[k] == i) {
                    out[k].name = shape.name;
                    out[k].value = v;
                }
            }
        }
        return true;
    }

    // The path alone: key values are decoded, the other values skipped.
    CIMObjectPath instancePath()
    {
        CIMName cls;
        PathPart part;
        std::vector<InstanceCodec::KeyValue> found;
        if (!keyValues(cls, part, found))
            return part.form == EXPLICIT_PATH ? part.path : CIMObjectPath();
        Array<CIMKeyBinding> keys;
        keys.reserveCapacity(Uint32(found.size()));
        for (const InstanceCodec::KeyValue& kv : found)
            keys.append(CIMKeyBinding(kv.name, kv.value));
        return CIMObjectPath(String(), CIMNamespaceName(), cls, keys);
    }

    template <class T> T unsignedNumber()
    {
        Uint64 v = varint();
        if (v > Uint64(T(~T(0))))
            damaged("number out of range");
        return T(v);
    }
    template <class T> T signedNumber()
    {
        Sint64 v = unzigzag(varint());
        if (sizeof(T) < 8 && (v < Sint64(-(Sint64(1) << (8 * sizeof(T) - 1))) ||
                                 v >= (Sint64(1) << (8 * sizeof(T) - 1))))
            damaged("number out of range");
        return T(v);
    }

    CIMValue value(int depth)
    {
        unsigned char header = byte();
        unsigned char type = header & TYPE_MASK;
        if (type > CIMTYPE_INSTANCE || (header & ~(TYPE_MASK | ARRAY_FLAG | NULL_FLAG)))
            damaged("bad value type");
        bool isArray = header & ARRAY_FLAG;
        if (header & NULL_FLAG) {
            CIMValue v;
            v.setNullValue(CIMType(type), isArray, isArray ? number() : 0);
            return v;
        }
        switch (CIMType(type)) {
        case CIMTYPE_BOOLEAN:
            return each<Boolean>(isArray, 1, [this] { return Boolean(byte() != 0); });
        case CIMTYPE_UINT8: return fixed<Uint8>(isArray);
        case CIMTYPE_SINT8: return fixed<Sint8>(isArray);
        case CIMTYPE_UINT16: return each<Uint16>(isArray, 1, [this] { return unsignedNumber<Uint16>(); });
        case CIMTYPE_SINT16: return each<Sint16>(isArray, 1, [this] { return signedNumber<Sint16>(); });
        case CIMTYPE_UINT32: return each<Uint32>(isArray, 1, [this] { return unsignedNumber<Uint32>(); });
        case CIMTYPE_SINT32: return each<Sint32>(isArray, 1, [this] { return signedNumber<Sint32>(); });
        case CIMTYPE_UINT64: return each<Uint64>(isArray, 1, [this] { return unsignedNumber<Uint64>(); });
        case CIMTYPE_SINT64: return each<Sint64>(isArray, 1, [this] { return signedNumber<Sint64>(); });
        case CIMTYPE_REAL32: return fixed<Real32>(isArray);
        case CIMTYPE_REAL64: return fixed<Real64>(isArray);
        case CIMTYPE_CHAR16:
            return each<Char16>(isArray, 1, [this] { return Char16(unsignedNumber<Uint16>()); });
        case CIMTYPE_STRING:
            return each<String>(isArray, 1, [this] { return string(); });
        case CIMTYPE_DATETIME:
            return each<CIMDateTime>(isArray, 1, [this] {
                try {
                    return CIMDateTime(text());
                } catch (const CIMException&) {
                    throw;
                } catch (const Exception&) {
                    damaged("bad datetime");
                }
            });
        case CIMTYPE_REFERENCE:
            return each<CIMObjectPath>(isArray, 4, [this] { return path(); });
        case CIMTYPE_OBJECT:
            return each<CIMObject>(isArray, 3, [this, depth] { return CIMObject(instance(depth + 1)); });
        case CIMTYPE_INSTANCE:
            return each<CIMInstance>(isArray, 3, [this, depth] { return instance(depth + 1); });
        }
        damaged("bad value type");
    }

    void skipPath()
    {
        skipString(); // host
        number();
        number();
        Uint32 n = count(3);
        for (Uint32 i = 0; i < n; ++i) {
            number();
            byte();
            skipString();
        }
    }
    void skipInstance(int depth)
    {
        if (depth > MAX_DEPTH)
            damaged("embedded instances nest too deeply");
        number();
        PathPart part;
        pathPart(part);
        Uint32 n = count(2);
        for (Uint32 i = 0; i < n; ++i) {
            number();
            skipValue(depth);
        }
    }
    void skipValue(int depth)
    {
        unsigned char header = byte();
        unsigned char type = header & TYPE_MASK;
        if (type > CIMTYPE_INSTANCE || (header & ~(TYPE_MASK | ARRAY_FLAG | NULL_FLAG)))
            damaged("bad value type");
        bool isArray = header & ARRAY_FLAG;
        if (header & NULL_FLAG) {
            if (isArray)
                number();
            return;
        }
        Uint32 n = isArray ? count(1) : 1;
        for (Uint32 i = 0; i < n; ++i) {
            switch (CIMType(type)) {
            case CIMTYPE_BOOLEAN:
            case CIMTYPE_UINT8:
            case CIMTYPE_SINT8: skipBytes(1); break;
            case CIMTYPE_REAL32: skipBytes(4); break;
            case CIMTYPE_REAL64: skipBytes(8); break;
            case CIMTYPE_UINT16:
            case CIMTYPE_SINT16:
            case CIMTYPE_UINT32:
            case CIMTYPE_SINT32:
            case CIMTYPE_UINT64:
            case CIMTYPE_SINT64:
            case CIMTYPE_CHAR16: varint(); break;
            case CIMTYPE_STRING:
            case CIMTYPE_DATETIME: skipString(); break;
            case CIMTYPE_REFERENCE: skipPath(); break;
            case CIMTYPE_OBJECT:
            case CIMTYPE_INSTANCE: skipInstance(depth + 1); break;
            }
        }
    }

private:
    NameDictionary::Reader _names;
};

// The first layout's format, read to convert older databases.
class FirstFormatReader : public ByteReader {
public:
    FirstFormatReader(const char* data, size_t size) : ByteReader(data, size) {}

    // The stored text may sit at any byte offset: it is copied into an
    // aligned buffer before it is read as 16-bit units.
    const std::u16string& units(Uint32 n)
    {
        thread_local std::u16string buffer;
        buffer.resize(n);
        std::memcpy(&buffer[0], _p, size_t(n) * 2);
        _p += size_t(n) * 2;
        return buffer;
    }
    String string()
    {
        Uint32 n = count(2);
        const std::u16string& text = units(n);
        return String(reinterpret_cast<const Char16*>(text.data()), n);
    }
    void skipString()
    {
        Uint32 n = count(2);
        _p += size_t(n) * 2;
    }
    // Names repeat in every instance of a class: each thread keeps the names
    // it has decoded, so that a name is checked and built once, then copied.
    CIMName name()
    {
        Uint32 n = count(2);
        if (n == 0)
            return CIMName();
        std::u16string_view bytes(units(n));
        struct Cache {
            std::unordered_map<std::u16string_view, std::unique_ptr<CIMName>> names;
        };
        thread_local Cache cache;
        auto it = cache.names.find(bytes);
        if (it != cache.names.end())
            return *it->second;
        std::unique_ptr<CIMName> made(new CIMName(String(
            reinterpret_cast<const Char16*>(bytes.data()), n)));
        if (cache.names.size() >= MAX_CACHED_NAMES)
            cache.names.clear();
        // The key views the text inside the cached name, which does not move.
        std::u16string_view key(made->getString().u16());
        CIMName result = *made;
        cache.names.emplace(key, std::move(made));
        return result;
    }

    CIMObjectPath path()
    {
        String host = string();
        String ns = string();
        CIMName cls = name();
        Uint32 n = count(3);
        Array<CIMKeyBinding> keys;
        keys.reserveCapacity(n);
        for (Uint32 i = 0; i < n; ++i) {
            CIMName keyName = name();
            unsigned char type = byte();
            if (type > CIMKeyBinding::REFERENCE)
                damaged("bad key type");
            keys.append(CIMKeyBinding(keyName, string(), CIMKeyBinding::Type(type)));
        }
        return CIMObjectPath(host, ns.size() ? CIMNamespaceName(ns) : CIMNamespaceName(),
            cls, keys);
    }

    CIMInstance instance(int depth, bool withClassOrigin = true)
    {
        if (depth > MAX_DEPTH)
            damaged("embedded instances nest too deeply");
        CIMName cls = name();
        if (cls.isNull())
            damaged("instance without class name");
        CIMInstance inst(cls);
        CIMObjectPath p = path();
        if (!p.getClassName().isNull())
            inst.setPath(p);
        Uint32 n = count(6);
        for (Uint32 i = 0; i < n; ++i) {
            CIMName propName = name();
            CIMName origin;
            if (withClassOrigin)
                origin = name();
            else
                skipString();
            CIMName refClass = name();
            bool propagated = byte() != 0;
            Uint32 arraySize = count(0);
            CIMValue v = value(depth);
            inst.addProperty(CIMProperty(propName, v, arraySize, refClass, origin, propagated));
        }
        return inst;
    }

    CIMValue value(int depth)
    {
        unsigned char type = byte();
        unsigned char flags = byte();
        if (type > CIMTYPE_INSTANCE || flags > 3)
            damaged("bad value type");
        bool isArray = flags & 1;
        if (flags & 2) {
            CIMValue v;
            v.setNullValue(CIMType(type), isArray, isArray ? count(0) : 0);
            return v;
        }
        switch (CIMType(type)) {
        case CIMTYPE_BOOLEAN:
            return each<Boolean>(isArray, 1, [this] { return Boolean(byte() != 0); });
        case CIMTYPE_UINT8: return fixed<Uint8>(isArray);
        case CIMTYPE_SINT8: return fixed<Sint8>(isArray);
        case CIMTYPE_UINT16: return fixed<Uint16>(isArray);
        case CIMTYPE_SINT16: return fixed<Sint16>(isArray);
        case CIMTYPE_UINT32: return fixed<Uint32>(isArray);
        case CIMTYPE_SINT32: return fixed<Sint32>(isArray);
        case CIMTYPE_UINT64: return fixed<Uint64>(isArray);
        case CIMTYPE_SINT64: return fixed<Sint64>(isArray);
        case CIMTYPE_REAL32: return fixed<Real32>(isArray);
        case CIMTYPE_REAL64: return fixed<Real64>(isArray);
        case CIMTYPE_CHAR16:
            return each<Char16>(isArray, 2, [this] { Uint16 u; raw(&u, 2); return Char16(u); });
        case CIMTYPE_STRING:
            return each<String>(isArray, 1, [this] { return string(); });
        case CIMTYPE_DATETIME:
            return each<CIMDateTime>(isArray, 1, [this] {
                try {
                    return CIMDateTime(string());
                } catch (const Exception&) {
                    damaged("bad datetime");
                }
            });
        case CIMTYPE_REFERENCE:
            return each<CIMObjectPath>(isArray, 4, [this] { return path(); });
        case CIMTYPE_OBJECT:
            return each<CIMObject>(isArray, 6, [this, depth] { return CIMObject(instance(depth + 1)); });
        case CIMTYPE_INSTANCE:
            return each<CIMInstance>(isArray, 6, [this, depth] { return instance(depth + 1); });
        }
        damaged("bad value type");
    }
};

} // namespace

void InstanceCodec::encode(const CIMConstInstance& instance, NameDictionary& names, std::string& out)
{
    Writer w(out, names);
    w.byte(CURRENT_FORMAT);
    w.instance(instance, 0);
}

std::string InstanceCodec::encode(const CIMConstInstance& instance, NameDictionary& names)
{
    std::string out;
    out.reserve(256);
    encode(instance, names, out);
    return out;
}

CIMInstance InstanceCodec::decode(const char* data, size_t size, const NameDictionary& names,
    bool withClassOrigin)
{
    return decode(data, size, names, withClassOrigin, nullptr);
}

CIMInstance InstanceCodec::decode(const char* data, size_t size, const NameDictionary& names,
    bool withClassOrigin, std::vector<KeyValue>* keys)
{
    if (keys)
        keys->clear();
    if (size == 0)
        damaged("no data");
    try {
        if (static_cast<unsigned char>(data[0]) == FIRST_FORMAT) {
            FirstFormatReader r(data + 1, size - 1);
            CIMInstance inst = r.instance(0, withClassOrigin);
            if (!r.atEnd())
                damaged("trailing data");
            return inst;
        }
        if (static_cast<unsigned char>(data[0]) != CURRENT_FORMAT)
            damaged("unknown format version");
        Reader r(data + 1, size - 1, names);
        CIMInstance inst = r.instance(0, withClassOrigin, keys);
        if (!r.atEnd())
            damaged("trailing data");
        return inst;
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance is damaged: " + e.getMessage());
    }
}

CIMObjectPath InstanceCodec::decodeInstancePath(const std::string& data, const NameDictionary& names)
{
    if (data.empty())
        damaged("no data");
    try {
        if (format(data) == FIRST_FORMAT) {
            FirstFormatReader r(data.data() + 1, data.size() - 1);
            r.name(); // the class; the path names it again
            return r.path();
        }
        if (format(data) != CURRENT_FORMAT)
            damaged("unknown format version");
        Reader r(data.data() + 1, data.size() - 1, names);
        return r.instancePath();
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance name is damaged: " + e.getMessage());
    }
}

bool InstanceCodec::decodeKeyValues(const std::string& data, const NameDictionary& names,
    CIMName& className, std::vector<KeyValue>& keys)
{
    if (format(data) != CURRENT_FORMAT)
        return false;
    try {
        Reader r(data.data() + 1, data.size() - 1, names);
        Reader::PathPart part;
        return r.keyValues(className, part, keys);
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance name is damaged: " + e.getMessage());
    }
}

std::string InstanceCodec::encodePath(const CIMObjectPath& path, NameDictionary& names)
{
    std::string out;
    out.reserve(128);
    Writer w(out, names);
    w.byte(CURRENT_FORMAT);
    w.path(path);
    return out;
}

CIMObjectPath InstanceCodec::decodePath(const std::string& data, const NameDictionary& names)
{
    if (data.empty())
        damaged("no data");
    try {
        if (format(data) == FIRST_FORMAT) {
            FirstFormatReader r(data.data() + 1, data.size() - 1);
            CIMObjectPath path = r.path();
            if (!r.atEnd())
                damaged("trailing data");
            return path;
        }
        if (format(data) != CURRENT_FORMAT)
            damaged("unknown format version");
        Reader r(data.data() + 1, data.size() - 1, names);
        CIMObjectPath path = r.path();
        if (!r.atEnd())
            damaged("trailing data");
        return path;
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance name is damaged: " + e.getMessage());
    }
}

} // namespace Pegasus
