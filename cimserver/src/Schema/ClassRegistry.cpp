#include <Pegasus/Schema/ClassRegistry.h>

#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

struct ClassRegistry::Entry
{
    ClassDecl cls;
    std::vector<const Entry*> children;
    // For associations: the classes their reference properties point to.
    std::vector<const ClassDecl*> referenced;
};

ClassRegistry::ClassRegistry(const std::string& namespaceName) : _namespace(namespaceName)
{
}

ClassRegistry::~ClassRegistry()
{
}

const ClassRegistry::Entry* ClassRegistry::_entry(const std::string& name) const
{
    auto it = _byName.find(name);
    return it == _byName.end() ? nullptr : it->second;
}

const ClassDecl* ClassRegistry::addClass(ClassDecl cls)
{
    std::string where = _namespace.empty() ? std::string() : " in namespace " + _namespace;
    if (cls.name.empty())
        throw SchemaError(cls.file, cls.line, "class without a name");
    if (const Entry* existing = _entry(cls.name))
        throw SchemaError(cls.file, cls.line,
                          "class " + cls.name + " is already defined" + where + " (" +
                              existing->cls.file + ":" + std::to_string(existing->cls.line) + ")");

    Entry* super = nullptr;
    if (!cls.superClassName.empty())
    {
        auto it = _byName.find(cls.superClassName);
        if (it == _byName.end())
            throw SchemaError(cls.file, cls.line,
                              "superclass " + cls.superClassName + " of class " + cls.name +
                                  " is not defined" + where);
        super = it->second;
    }

    cls.resolve(super ? &super->cls : nullptr);

    std::unique_ptr<Entry> entry(new Entry);
    entry->cls = std::move(cls);
    const ClassDecl& c = entry->cls;

    // Reference properties must point at known classes; an override may only
    // narrow the class it refers to.
    for (const PropertyDecl& p : c.properties())
    {
        if (!p.isReference() || p.propagated)
            continue;
        const ClassDecl* target = CaseInsensitive::equal(p.referenceClass, c.name) ? &c : nullptr;
        if (!target)
        {
            const Entry* e = _entry(p.referenceClass);
            if (!e)
                throw SchemaError(p.file, p.line,
                                  "reference property " + p.name + " of class " + c.name +
                                      " refers to class " + p.referenceClass + ", which is not defined" +
                                      where);
            target = &e->cls;
        }
        if (super)
        {
            const PropertyDecl* inherited = nullptr;
            const QualifierDecl* ov = p.qualifiers.find("Override");
            inherited = super->cls.findProperty(ov && ov->value.kind == MofValue::STRING ? ov->value.text : p.name);
            if (inherited && inherited->isReference())
            {
                const Entry* base = _entry(inherited->referenceClass);
                if (base && !target->isSubclassOf(&base->cls))
                    throw SchemaError(p.file, p.line,
                                      "reference property " + p.name + " of class " + c.name +
                                          " refers to " + p.referenceClass + ", which is not a subclass of " +
                                          inherited->referenceClass + " as the inherited reference requires");
            }
        }
    }

    if (c.isAssociation())
    {
        for (const PropertyDecl& p : c.properties())
        {
            if (!p.isReference())
                continue;
            const ClassDecl* target = CaseInsensitive::equal(p.referenceClass, c.name)
                                          ? &c
                                          : (_entry(p.referenceClass) ? &_entry(p.referenceClass)->cls : nullptr);
            if (target)
                entry->referenced.push_back(target);
        }
    }

    Entry* raw = entry.get();
    _classes.push_back(std::move(entry));
    _byName.emplace(raw->cls.name, raw);
    if (super)
        super->children.push_back(raw);
    return &raw->cls;
}

const ClassDecl* ClassRegistry::findClass(const std::string& name) const
{
    const Entry* e = _entry(name);
    return e ? &e->cls : nullptr;
}

bool ClassRegistry::isSubclassOf(const std::string& cls, const std::string& base) const
{
    const Entry* c = _entry(cls);
    if (!c)
        return false;
    const Entry* b = _entry(base);
    return b && c->cls.isSubclassOf(&b->cls);
}

std::vector<std::string> ClassRegistry::subclassesOf(const std::string& cls, bool deep) const
{
    std::vector<std::string> names;
    const Entry* e = _entry(cls);
    if (!e)
        return names;
    if (!deep)
    {
        for (const Entry* child : e->children)
            names.push_back(child->cls.name);
        return names;
    }
    for (const std::unique_ptr<Entry>& other : _classes)
    {
        if (other.get() != e && other->cls.isSubclassOf(&e->cls))
            names.push_back(other->cls.name);
    }
    return names;
}

std::vector<std::string> ClassRegistry::classNames() const
{
    std::vector<std::string> names;
    names.reserve(_classes.size());
    for (const std::unique_ptr<Entry>& e : _classes)
        names.push_back(e->cls.name);
    return names;
}

std::vector<std::string> ClassRegistry::topClasses() const
{
    std::vector<std::string> names;
    for (const std::unique_ptr<Entry>& e : _classes)
    {
        if (!e->cls.superClass())
            names.push_back(e->cls.name);
    }
    return names;
}

std::vector<const ClassDecl*> ClassRegistry::associationClassesReferencing(const std::string& cls) const
{
    std::vector<const ClassDecl*> result;
    const Entry* target = _entry(cls);
    if (!target)
        return result;
    for (const std::unique_ptr<Entry>& e : _classes)
    {
        for (const ClassDecl* referenced : e->referenced)
        {
            if (target->cls.isSubclassOf(referenced))
            {
                result.push_back(&e->cls);
                break;
            }
        }
    }
    return result;
}

} // namespace Pegasus
