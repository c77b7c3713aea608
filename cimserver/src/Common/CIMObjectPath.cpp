#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include <cctype>
#include <cstdlib>
#include <string>

PEGASUS_NAMESPACE_BEGIN

namespace {

void sortKeys(Array<CIMKeyBinding>& keys) {
    // Insertion sort: key lists are short, and the sort must be stable.
    for (Uint32 i = 1; i < keys.size(); ++i) {
        CIMKeyBinding key = keys[i];
        Uint32 j = i;
        while (j > 0 && String::compareNoCase(keys[j - 1].getName().getString(), key.getName().getString()) > 0) {
            keys[j] = keys[j - 1];
            --j;
        }
        keys[j] = key;
    }
}

bool validNumber(const std::string& s) {
    if (s.empty()) return false;
    size_t i = (s[0] == '-' || s[0] == '+') ? 1 : 0;
    if (i >= s.size()) return false;
    if (s.size() > i + 2 && s[i] == '0' && (s[i + 1] == 'x' || s[i + 1] == 'X')) {
        for (size_t k = i + 2; k < s.size(); ++k) {
            if (!std::isxdigit(static_cast<unsigned char>(s[k]))) return false;
        }
        return true;
    }
    bool digits = true;
    for (size_t k = i; k < s.size(); ++k) digits = digits && std::isdigit(static_cast<unsigned char>(s[k]));
    if (digits) return true;
    // A real number key.
    char* end = nullptr;
    std::strtod(s.c_str(), &end);
    return end && *end == '\0';
}

class PathParser {
public:
    explicit PathParser(const String& text) : _text(text), _s(text.u16()) {}

    void parse(String& host, CIMNamespaceName& ns, CIMName& className, Array<CIMKeyBinding>& keys) {
        size_t pos = 0;
        if (_s.size() >= 2 && _s[0] == u'/' && _s[1] == u'/') {
            size_t slash = _s.find(u'/', 2);
            if (slash == std::u16string::npos || slash == 2) fail();
            host = String::fromUtf8(toUtf8(_s.substr(2, slash - 2)));
            pos = slash + 1;
        }
        // A ':' before the first '.' ends the namespace; one after it belongs to a key value.
        size_t dot = _s.find(u'.', pos);
        size_t colon = _s.find(u':', pos);
        if (colon != std::u16string::npos && (dot == std::u16string::npos || colon < dot)) {
            try {
                ns = CIMNamespaceName(substr(pos, colon));
            } catch (const Exception&) {
                fail();
            }
            pos = colon + 1;
            dot = _s.find(u'.', pos);
        } else if (host.size() > 0) {
            fail();  // a host needs a namespace
        }
        const size_t classEnd = dot == std::u16string::npos ? _s.size() : dot;
        try {
            className = CIMName(substr(pos, classEnd));
        } catch (const Exception&) {
            fail();
        }
        if (dot == std::u16string::npos) return;
        pos = dot + 1;
        if (pos >= _s.size()) fail();
        while (pos < _s.size()) {
            size_t eq = _s.find(u'=', pos);
            if (eq == std::u16string::npos) fail();
            CIMName keyName;
            try {
                keyName = CIMName(substr(pos, eq));
            } catch (const Exception&) {
                fail();
            }
            for (Uint32 i = 0; i < keys.size(); ++i) {
                if (keys[i].getName().equal(keyName)) fail();  // duplicate key
            }
            pos = eq + 1;
            if (pos >= _s.size()) fail();
            if (_s[pos] == u'"') {
                String value;
                ++pos;
                bool closed = false;
                while (pos < _s.size()) {
                    char16_t c = _s[pos++];
                    if (c == u'\\') {
                        if (pos >= _s.size()) fail();
                        value.append(Char16(Uint16(_s[pos++])));
                    } else if (c == u'"') {
                        closed = true;
                        break;
                    } else {
                        value.append(Char16(Uint16(c)));
                    }
                }
                if (!closed) fail();
                CIMKeyBinding::Type type = CIMKeyBinding::STRING;
                if (value.find(Char16('=')) != PEG_NOT_FOUND) {
                    // A quoted path with keys is a reference.
                    try {
                        CIMObjectPath ref(value);
                        if (ref.getKeyBindings().size() > 0) {
                            type = CIMKeyBinding::REFERENCE;
                            value = ref.toString();
                        }
                    } catch (const Exception&) {
                    }
                }
                keys.append(CIMKeyBinding(keyName, value, type));
            } else {
                size_t end = _s.find(u',', pos);
                if (end == std::u16string::npos) end = _s.size();
                String value = substr(pos, end);
                const std::string text = value.toUtf8();
                if (text.empty()) fail();
                if (text[0] == 'T' || text[0] == 't' || text[0] == 'F' || text[0] == 'f') {
                    if (String::equalNoCase(value, "TRUE")) keys.append(CIMKeyBinding(keyName, "TRUE", CIMKeyBinding::BOOLEAN));
                    else if (String::equalNoCase(value, "FALSE")) keys.append(CIMKeyBinding(keyName, "FALSE", CIMKeyBinding::BOOLEAN));
                    else fail();
                } else {
                    if (!validNumber(text)) fail();
                    keys.append(CIMKeyBinding(keyName, value, CIMKeyBinding::NUMERIC));
                }
                pos = end;
            }
            if (pos < _s.size()) {
                if (_s[pos] != u',') fail();
                ++pos;
                if (pos >= _s.size()) fail();
            }
        }
    }

private:
    [[noreturn]] void fail() const { throw MalformedObjectNameException(_text); }
    String substr(size_t from, size_t to) const {
        return String(reinterpret_cast<const Char16*>(_s.data() + from), Uint32(to - from));
    }
    static std::string toUtf8(const std::u16string& s) {
        return String(reinterpret_cast<const Char16*>(s.data()), Uint32(s.size())).toUtf8();
    }
    const String& _text;
    const std::u16string& _s;
};

void appendQuoted(String& out, const String& value) {
    out.append(Char16('"'));
    for (Uint32 i = 0; i < value.size(); ++i) {
        const Char16 c = value[i];
        if (c == '"' || c == '\\') out.append(Char16('\\'));
        out.append(c);
    }
    out.append(Char16('"'));
}

}  // namespace

CIMObjectPath::CIMObjectPath() {}

CIMObjectPath::CIMObjectPath(const String& objectName) { set(objectName); }

CIMObjectPath::CIMObjectPath(const String& host, const CIMNamespaceName& nameSpace,
                             const CIMName& className, const Array<CIMKeyBinding>& keyBindings) {
    set(host, nameSpace, className, keyBindings);
}

CIMObjectPath& CIMObjectPath::operator=(const String& objectName) {
    set(objectName);
    return *this;
}

void CIMObjectPath::clear() {
    _host.clear();
    _nameSpace.clear();
    _className.clear();
    _keyBindings.clear();
}

void CIMObjectPath::set(const String& host, const CIMNamespaceName& nameSpace,
                        const CIMName& className, const Array<CIMKeyBinding>& keyBindings) {
    setHost(host);
    _nameSpace = nameSpace;
    _className = className;
    setKeyBindings(keyBindings);
}

void CIMObjectPath::set(const String& objectName) {
    String host;
    CIMNamespaceName ns;
    CIMName className;
    Array<CIMKeyBinding> keys;
    PathParser(objectName).parse(host, ns, className, keys);
    _host = host;
    _nameSpace = ns;
    _className = className;
    sortKeys(keys);
    _keyBindings = keys;
}

void CIMObjectPath::setHost(const String& host) {
    // Host names and addresses, with an optional port; nothing that would
    // break the text form.
    for (Uint32 i = 0; i < host.size(); ++i) {
        const Char16 c = host[i];
        if (c == '/' || c == '"' || c == ',' || c == ' ' || Uint16(c) < 0x20) throw MalformedObjectNameException(host);
    }
    _host = host;
}

void CIMObjectPath::setKeyBindings(const Array<CIMKeyBinding>& keyBindings) {
    Array<CIMKeyBinding> keys(keyBindings);
    sortKeys(keys);
    _keyBindings = keys;
}

String CIMObjectPath::toString() const {
    String out;
    if (_host.size() > 0) {
        out.append(String("//"));
        out.append(_host);
        out.append(Char16('/'));
    }
    if (!_nameSpace.isNull() || _host.size() > 0) {
        out.append(_nameSpace.getString());
        out.append(Char16(':'));
    }
    out.append(_className.getString());
    for (Uint32 i = 0; i < _keyBindings.size(); ++i) {
        out.append(Char16(i == 0 ? '.' : ','));
        out.append(_keyBindings[i].getName().getString());
        out.append(Char16('='));
        const CIMKeyBinding::Type type = _keyBindings[i].getType();
        if (type == CIMKeyBinding::STRING || type == CIMKeyBinding::REFERENCE) appendQuoted(out, _keyBindings[i].getValue());
        else out.append(_keyBindings[i].getValue());
    }
    return out;
}

Boolean CIMObjectPath::identical(const CIMObjectPath& x) const {
    if (!String::equalNoCase(_host, x._host) || !_nameSpace.equal(x._nameSpace) ||
        !_className.equal(x._className) || _keyBindings.size() != x._keyBindings.size())
        return false;
    for (Uint32 i = 0; i < _keyBindings.size(); ++i) {
        if (!(_keyBindings[i] == x._keyBindings[i])) return false;
    }
    return true;
}

Uint32 CIMObjectPath::makeHashCode() const {
    // Only what identical() compares case-insensitively is folded.
    Uint32 hash = 2166136261u;
    auto mix = [&hash](const String& s, bool fold) {
        for (Uint32 i = 0; i < s.size(); ++i) {
            Uint16 c = s[i];
            if (fold && c >= 'A' && c <= 'Z') c = Uint16(c + 32);
            hash = (hash ^ c) * 16777619u;
        }
        hash = (hash ^ 0xFFFFu) * 16777619u;
    };
    mix(_host, true);
    mix(_nameSpace.getString(), true);
    mix(_className.getString(), true);
    for (Uint32 i = 0; i < _keyBindings.size(); ++i) {
        mix(_keyBindings[i].getName().getString(), true);
        // Numeric, boolean and reference values may be written in several
        // ways; only string values feed the hash.
        if (_keyBindings[i].getType() == CIMKeyBinding::STRING) mix(_keyBindings[i].getValue(), false);
    }
    return hash;
}

Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y) { return x.identical(y); }
Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y) { return !x.identical(y); }

PEGASUS_NAMESPACE_END
