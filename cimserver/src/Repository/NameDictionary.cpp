#include <Pegasus/Repository/NameDictionary.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/RepositoryConnection.h>

namespace Pegasus {

namespace {

// First byte of a stored entry.
const char NAME_ENTRY = 'n';
const char PROPERTY_ENTRY = 'p';

void putVarint(std::string& out, Uint64 v)
{
    while (v >= 0x80) {
        out.push_back(char((v & 0x7f) | 0x80));
        v >>= 7;
    }
    out.push_back(char(v));
}

bool getVarint(const std::string& in, size_t& pos, Uint64& v)
{
    v = 0;
    for (int shift = 0; shift < 64 && pos < in.size(); shift += 7) {
        unsigned char b = static_cast<unsigned char>(in[pos++]);
        v |= Uint64(b & 0x7f) << shift;
        if (!(b & 0x80))
            return true;
    }
    return false;
}

// The lookup key of a property shape: its names and flags as one text.
const std::u16string& shapeKey(const String& name, const String& origin, const String& reference,
    bool propagated, Uint32 arraySize)
{
    thread_local std::u16string key;
    key.clear();
    key.append(name.u16());
    key.push_back(u'\0');
    key.append(origin.u16());
    key.push_back(u'\0');
    key.append(reference.u16());
    key.push_back(u'\0');
    key.push_back(propagated ? u'1' : u'0');
    key.push_back(char16_t(arraySize & 0xffff));
    key.push_back(char16_t(arraySize >> 16));
    return key;
}

// A name number that points at a property shape, or at nothing of the kind
// asked for: the stored instance cannot be read.
CIMException notAName(Uint32 id)
{
    return CIMException(CIM_ERR_FAILED, String(("stored instance is damaged: entry " +
        std::to_string(id) + " is not a name").c_str()));
}

} // namespace

const NameDictionary::Entry& NameDictionary::entry(Uint32 id) const
{
    if (id == 0 || id > _entries.size())
        throw CIMException(CIM_ERR_FAILED, String(("stored instance is damaged: unknown name number " +
            std::to_string(id)).c_str()));
    return _entries[id - 1];
}

const CIMName& NameDictionary::Reader::name(Uint32 id) const
{
    static const CIMName none;
    if (id == 0)
        return none;
    const Entry& e = _d.entry(id);
    if (e.isProperty || e.name.isNull())
        throw notAName(id);
    return e.name;
}

const String& NameDictionary::Reader::text(Uint32 id) const
{
    static const String none;
    if (id == 0)
        return none;
    const Entry& e = _d.entry(id);
    if (e.isProperty || e.stored.empty())
        throw notAName(id);
    return e.text;
}

const NameDictionary::PropertyShape& NameDictionary::Reader::property(Uint32 id) const
{
    const Entry& e = _d.entry(id);
    if (!e.isProperty)
        throw CIMException(CIM_ERR_FAILED, String(("stored instance is damaged: entry " +
            std::to_string(id) + " is not a property").c_str()));
    return e.shape;
}

std::string NameDictionary::encodeName(const String& name)
{
    std::string out(1, NAME_ENTRY);
    out += name.toUtf8();
    return out;
}

std::string NameDictionary::encodeProperty(Uint32 nameId, Uint32 originId, Uint32 referenceClassId,
    bool propagated, Uint32 arraySize)
{
    std::string out(1, PROPERTY_ENTRY);
    putVarint(out, nameId);
    putVarint(out, originId);
    putVarint(out, referenceClassId);
    out.push_back(propagated ? 1 : 0);
    putVarint(out, arraySize);
    return out;
}

Uint32 NameDictionary::add(Entry entry, const std::u16string& key, bool isProperty)
{
    std::unique_lock<std::shared_mutex> lock(_mutex);
    auto& index = isProperty ? _properties : _names;
    auto it = index.find(key);
    if (it != index.end())
        return it->second;
    _entries.push_back(std::move(entry));
    Uint32 id = Uint32(_entries.size());
    index.emplace(key, id);
    _pending.push_back(id);
    return id;
}

Uint32 NameDictionary::knownNameId(const String& name) const
{
    if (name.size() == 0)
        return 0;
    std::shared_lock<std::shared_mutex> lock(_mutex);
    auto it = _names.find(name.u16());
    return it == _names.end() ? 0 : it->second;
}

String NameDictionary::textOf(Uint32 id) const
{
    Reader reader(*this);
    return reader.text(id);
}

Uint32 NameDictionary::nameId(const String& name)
{
    if (name.size() == 0)
        return 0;
    if (Uint32 id = knownNameId(name))
        return id;
    Entry e;
    e.text = name;
    try {
        e.name = CIMName(name);
    } catch (const Exception&) {
        // A namespace or other text that is not a CIM name: kept as text only.
    }
    e.stored = encodeName(name);
    return add(std::move(e), name.u16(), false);
}

Uint32 NameDictionary::propertyId(const CIMConstProperty& property)
{
    const String& name = property.getName().getString();
    const String& origin = property.getClassOrigin().getString();
    const String& reference = property.getReferenceClassName().getString();
    bool propagated = property.getPropagated();
    Uint32 arraySize = property.getArraySize();
    {
        std::shared_lock<std::shared_mutex> lock(_mutex);
        auto it = _properties.find(shapeKey(name, origin, reference, propagated, arraySize));
        if (it != _properties.end())
            return it->second;
    }
    Entry e;
    e.isProperty = true;
    e.shape.name = property.getName();
    e.shape.origin = property.getClassOrigin();
    e.shape.referenceClass = property.getReferenceClassName();
    e.shape.propagated = propagated;
    e.shape.arraySize = arraySize;
    e.stored = encodeProperty(nameId(name), nameId(origin), nameId(reference), propagated, arraySize);
    std::u16string key = shapeKey(name, origin, reference, propagated, arraySize);
    return add(std::move(e), key, true);
}

bool NameDictionary::parse(Uint32 id, const std::string& stored, Entry& e) const
{
    if (stored.empty())
        return false;
    e.stored = stored;
    if (stored[0] == NAME_ENTRY) {
        e.isProperty = false;
        try {
            e.text = String::fromUtf8(stored.substr(1));
        } catch (const Exception&) {
            return false;
        }
        if (e.text.size() == 0)
            return false;
        try {
            e.name = CIMName(e.text);
        } catch (const Exception&) {
        }
        return true;
    }
    if (stored[0] != PROPERTY_ENTRY)
        return false;
    e.isProperty = true;
    size_t pos = 1;
    Uint64 ids[3];
    for (Uint64& n : ids) {
        if (!getVarint(stored, pos, n) || n >= id)
            return false; // a shape names only entries made before it
        if (n != 0 && (_entries[n - 1].isProperty || _entries[n - 1].name.isNull()))
            return false;
    }
    if (ids[0] == 0 || pos >= stored.size())
        return false;
    e.shape.propagated = stored[pos++] != 0;
    Uint64 arraySize = 0;
    if (!getVarint(stored, pos, arraySize) || arraySize > 0xffffffffu || pos != stored.size())
        return false;
    e.shape.name = _entries[ids[0] - 1].name;
    e.shape.origin = ids[1] ? _entries[ids[1] - 1].name : CIMName();
    e.shape.referenceClass = ids[2] ? _entries[ids[2] - 1].name : CIMName();
    e.shape.arraySize = Uint32(arraySize);
    return true;
}

void NameDictionary::load(RepositoryConnection& connection)
{
    std::unique_lock<std::shared_mutex> lock(_mutex);
    _entries.clear();
    _names.clear();
    _properties.clear();
    _pending.clear();
    connection.forEachDictionaryEntry([&](int64_t id, const std::string& stored) {
        if (id <= int64_t(_entries.size()) || id > int64_t(0xffffffffu))
            throw SqliteError("repository database " + connection.database().file() +
                " is damaged: bad entry number " + std::to_string(id) + " in its name dictionary");
        // A number handed out but never stored leaves a gap: nothing stored
        // uses it, and it is not given again.
        while (int64_t(_entries.size()) + 1 < id)
            _entries.emplace_back();
        Entry e;
        if (!parse(Uint32(id), stored, e))
            throw SqliteError("repository database " + connection.database().file() +
                " is damaged: entry " + std::to_string(id) + " of its name dictionary cannot be read");
        _entries.push_back(std::move(e));
        const Entry& added = _entries.back();
        if (added.isProperty)
            _properties.emplace(shapeKey(added.shape.name.getString(), added.shape.origin.getString(),
                added.shape.referenceClass.getString(), added.shape.propagated,
                added.shape.arraySize), Uint32(id));
        else
            _names.emplace(added.text.u16(), Uint32(id));
    });
}

void NameDictionary::storePending(RepositoryConnection& connection)
{
    std::lock_guard<std::mutex> storing(_storeMutex);
    std::vector<std::pair<Uint32, std::string>> todo;
    {
        std::unique_lock<std::shared_mutex> lock(_mutex);
        if (_pending.empty())
            return;
        for (Uint32 id : _pending)
            todo.emplace_back(id, _entries[id - 1].stored);
        _pending.clear();
    }
    try {
        for (const auto& item : todo) {
            if (connection.insertDictionaryEntry(item.first, item.second))
                continue;
            std::string there;
            if (!connection.dictionaryEntry(item.first, &there) || there != item.second)
                throw SqliteError("repository database " + connection.database().file() +
                    " was changed by another process: entry " + std::to_string(item.first) +
                    " of its name dictionary differs; only one server may use a repository");
        }
    } catch (...) {
        std::unique_lock<std::shared_mutex> lock(_mutex);
        for (const auto& item : todo)
            _pending.push_back(item.first);
        throw;
    }
}

void NameDictionary::rolledBack()
{
    std::unique_lock<std::shared_mutex> lock(_mutex);
    _pending.clear();
    for (Uint32 id = 1; id <= _entries.size(); ++id)
        if (!_entries[id - 1].stored.empty())
            _pending.push_back(id);
}

size_t NameDictionary::size() const
{
    std::shared_lock<std::shared_mutex> lock(_mutex);
    return _entries.size();
}

} // namespace Pegasus
