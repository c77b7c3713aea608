#include <Pegasus/Repository/ClassCache.h>

#include <Pegasus/Schema/ClassDecl.h>

namespace Pegasus {

namespace {

std::u16string lowerKey(const std::u16string& text)
{
    std::u16string out(text);
    for (char16_t& c : out)
        if (c >= u'A' && c <= u'Z')
            c = char16_t(c - u'A' + u'a');
    return out;
}

CIMName nameOrNull(const std::string& text)
{
    return text.empty() ? CIMName() : CIMName(String::fromUtf8(text));
}

} // namespace

const ClassCache::Property* ClassCache::Entry::find(const String& name) const
{
    auto it = byLowerName.find(lowerKey(name.u16()));
    return it == byLowerName.end() ? nullptr : &properties[it->second];
}

const ClassCache::Entry& ClassCache::get(const ClassDecl& cls)
{
    std::lock_guard<std::mutex> lock(_mutex);
    std::unique_ptr<Entry>& slot = _entries[&cls];
    if (slot)
        return *slot;
    std::unique_ptr<Entry> entry(new Entry);
    entry->decl = &cls;
    entry->name = CIMName(String::fromUtf8(cls.name));
    for (const PropertyDecl& p : cls.properties()) {
        Property prop{&p, CIMName(String::fromUtf8(p.name)), nameOrNull(p.classOrigin),
            nameOrNull(p.referenceClass)};
        entry->byLowerName[lowerKey(prop.name.getString().u16())] = entry->properties.size();
        if (p.isKey)
            entry->keys.push_back(entry->properties.size());
        if (p.isReference())
            entry->hasReferences = true;
        entry->properties.push_back(prop);
    }
    slot = std::move(entry);
    return *slot;
}

} // namespace Pegasus
