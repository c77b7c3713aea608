#include <Pegasus/Repository/InstanceCodec.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>

#include <cstring>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace Pegasus {

namespace {

const unsigned char FORMAT_VERSION = 1;
// Embedded instances nest; deeper data is refused as damaged.
const int MAX_DEPTH = 32;
// Bound of the per-thread cache of decoded names.
const size_t MAX_CACHED_NAMES = 4096;

class Writer {
public:
    explicit Writer(std::string& out) : _out(out) {}

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
    void string(const String& s)
    {
        const std::u16string& u = s.u16();
        varint(u.size());
        raw(u.data(), u.size() * sizeof(char16_t));
    }
    void name(const CIMName& n) { string(n.getString()); }

    void path(const CIMObjectPath& p)
    {
        string(p.getHost());
        string(p.getNameSpace().getString());
        name(p.getClassName());
        const Array<CIMKeyBinding>& keys = p.getKeyBindings();
        varint(keys.size());
        for (const CIMKeyBinding& kb : keys) {
            name(kb.getName());
            byte(static_cast<unsigned char>(kb.getType()));
            string(kb.getValue());
        }
    }

    void instance(const CIMConstInstance& inst, int depth)
    {
        if (depth > MAX_DEPTH)
            throw CIMException(CIM_ERR_FAILED, "embedded instances nest too deeply to be stored");
        name(inst.getClassName());
        path(inst.getPath());
        Uint32 count = inst.getPropertyCount();
        varint(count);
        for (Uint32 i = 0; i < count; ++i) {
            CIMConstProperty p = inst.getProperty(i);
            name(p.getName());
            name(p.getClassOrigin());
            name(p.getReferenceClassName());
            byte(p.getPropagated() ? 1 : 0);
            varint(p.getArraySize());
            value(p.getValue(), depth);
        }
    }

    template <class T> void scalarOrArray(const CIMValue& v)
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
        byte(static_cast<unsigned char>(v.getType()));
        byte((v.isArray() ? 1 : 0) | (v.isNull() ? 2 : 0));
        if (v.isNull()) {
            if (v.isArray())
                varint(v.getArraySize());
            return;
        }
        switch (v.getType()) {
        case CIMTYPE_BOOLEAN:
            each<Boolean>(v, [this](Boolean b) { byte(b ? 1 : 0); });
            break;
        case CIMTYPE_UINT8: scalarOrArray<Uint8>(v); break;
        case CIMTYPE_SINT8: scalarOrArray<Sint8>(v); break;
        case CIMTYPE_UINT16: scalarOrArray<Uint16>(v); break;
        case CIMTYPE_SINT16: scalarOrArray<Sint16>(v); break;
        case CIMTYPE_UINT32: scalarOrArray<Uint32>(v); break;
        case CIMTYPE_SINT32: scalarOrArray<Sint32>(v); break;
        case CIMTYPE_UINT64: scalarOrArray<Uint64>(v); break;
        case CIMTYPE_SINT64: scalarOrArray<Sint64>(v); break;
        case CIMTYPE_REAL32: scalarOrArray<Real32>(v); break;
        case CIMTYPE_REAL64: scalarOrArray<Real64>(v); break;
        case CIMTYPE_CHAR16:
            each<Char16>(v, [this](const Char16& c) { Uint16 u = c; raw(&u, 2); });
            break;
        case CIMTYPE_STRING:
            each<String>(v, [this](const String& s) { string(s); });
            break;
        case CIMTYPE_DATETIME:
            each<CIMDateTime>(v, [this](const CIMDateTime& d) { string(d.toString()); });
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
};

class Reader {
public:
    Reader(const char* data, size_t size) : _p(data), _end(data + size) {}

    [[noreturn]] void damaged(const char* what)
    {
        throw CIMException(CIM_ERR_FAILED,
            String("stored instance is damaged: ") + String(what));
    }
    unsigned char byte()
    {
        if (_p >= _end)
            damaged("unexpected end of data");
        return static_cast<unsigned char>(*_p++);
    }
    Uint64 varint()
    {
        Uint64 v = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            unsigned char b = byte();
            v |= Uint64(b & 0x7f) << shift;
            if (!(b & 0x80))
                return v;
        }
        damaged("bad length");
    }
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

    template <class T> CIMValue scalarOrArray(bool isArray)
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
        case CIMTYPE_UINT8: return scalarOrArray<Uint8>(isArray);
        case CIMTYPE_SINT8: return scalarOrArray<Sint8>(isArray);
        case CIMTYPE_UINT16: return scalarOrArray<Uint16>(isArray);
        case CIMTYPE_SINT16: return scalarOrArray<Sint16>(isArray);
        case CIMTYPE_UINT32: return scalarOrArray<Uint32>(isArray);
        case CIMTYPE_SINT32: return scalarOrArray<Sint32>(isArray);
        case CIMTYPE_UINT64: return scalarOrArray<Uint64>(isArray);
        case CIMTYPE_SINT64: return scalarOrArray<Sint64>(isArray);
        case CIMTYPE_REAL32: return scalarOrArray<Real32>(isArray);
        case CIMTYPE_REAL64: return scalarOrArray<Real64>(isArray);
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

    bool atEnd() const { return _p == _end; }

private:
    const char* _p;
    const char* _end;
};

} // namespace

void InstanceCodec::encode(const CIMConstInstance& instance, std::string& out)
{
    Writer w(out);
    w.byte(FORMAT_VERSION);
    w.instance(instance, 0);
}

std::string InstanceCodec::encode(const CIMConstInstance& instance)
{
    std::string out;
    out.reserve(256);
    encode(instance, out);
    return out;
}

CIMInstance InstanceCodec::decode(const char* data, size_t size, bool withClassOrigin)
{
    Reader r(data, size);
    if (r.byte() != FORMAT_VERSION)
        r.damaged("unknown format version");
    try {
        CIMInstance inst = r.instance(0, withClassOrigin);
        if (!r.atEnd())
            r.damaged("trailing data");
        return inst;
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance is damaged: " + e.getMessage());
    }
}

CIMObjectPath InstanceCodec::decodeInstancePath(const std::string& data)
{
    Reader r(data.data(), data.size());
    if (r.byte() != FORMAT_VERSION)
        r.damaged("unknown format version");
    try {
        r.name(); // the class; the path names it again
        return r.path();
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance name is damaged: " + e.getMessage());
    }
}

std::string InstanceCodec::encodePath(const CIMObjectPath& path)
{
    std::string out;
    out.reserve(128);
    Writer w(out);
    w.byte(FORMAT_VERSION);
    w.path(path);
    return out;
}

CIMObjectPath InstanceCodec::decodePath(const char* data, size_t size)
{
    Reader r(data, size);
    if (r.byte() != FORMAT_VERSION)
        r.damaged("unknown format version");
    try {
        CIMObjectPath path = r.path();
        if (!r.atEnd())
            r.damaged("trailing data");
        return path;
    } catch (const CIMException&) {
        throw;
    } catch (const Exception& e) {
        throw CIMException(CIM_ERR_FAILED, "stored instance name is damaged: " + e.getMessage());
    }
}

} // namespace Pegasus
