#include <Pegasus/Schema/ClassDecl.h>

#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

namespace {

// Qualifiers that apply only where they are written.
bool isRestricted(const std::string& qualifier)
{
    return CaseInsensitive::equal(qualifier, "Override") ||
           CaseInsensitive::equal(qualifier, "Abstract");
}

QualifierList mergeQualifiers(const QualifierList& inherited, const QualifierList& local)
{
    QualifierList merged;
    for (const QualifierDecl& q : inherited.all())
    {
        if (!isRestricted(q.name))
            merged.add(q);
    }
    for (const QualifierDecl& q : local.all())
        merged.set(q);
    return merged;
}

void applyPropertyFlags(PropertyDecl& p)
{
    p.isKey = p.qualifiers.isTrue("Key");
    p.embeddedInstanceClass = p.qualifiers.stringValue("EmbeddedInstance");
    p.embeddedObject = p.qualifiers.isTrue("EmbeddedObject");
}

} // namespace

bool ClassDecl::isSubclassOf(const ClassDecl* other) const
{
    if (!other)
        return false;
    // Walk up only as far as `other` could stand.
    const ClassDecl* c = this;
    while (c && c->_depth > other->_depth)
        c = c->_super;
    return c == other;
}

const PropertyDecl* ClassDecl::findProperty(const std::string& propName) const
{
    Index::const_iterator it = _propertyIndex.find(propName);
    return it == _propertyIndex.end() ? nullptr : &_properties[it->second];
}

const MethodDecl* ClassDecl::findMethod(const std::string& methodName) const
{
    Index::const_iterator it = _methodIndex.find(methodName);
    return it == _methodIndex.end() ? nullptr : &_methods[it->second];
}

const PropertyDecl* ClassDecl::findLocalProperty(const std::string& propName) const
{
    for (const PropertyDecl& p : localProperties)
    {
        if (CaseInsensitive::equal(p.name, propName))
            return &p;
    }
    return nullptr;
}

std::vector<std::string> ClassDecl::keyNames() const
{
    std::vector<std::string> names;
    for (const PropertyDecl& p : _properties)
    {
        if (p.isKey)
            names.push_back(p.name);
    }
    return names;
}

std::vector<const PropertyDecl*> ClassDecl::keyProperties() const
{
    std::vector<const PropertyDecl*> keys;
    for (const PropertyDecl& p : _properties)
    {
        if (p.isKey)
            keys.push_back(&p);
    }
    return keys;
}

std::vector<const PropertyDecl*> ClassDecl::referenceProperties() const
{
    std::vector<const PropertyDecl*> refs;
    for (const PropertyDecl& p : _properties)
    {
        if (p.isReference())
            refs.push_back(&p);
    }
    return refs;
}

void ClassDecl::resolve(const ClassDecl* superClass)
{
    auto fail = [this](unsigned at, const std::string& message) {
        throw SchemaError(file, at ? at : line, message);
    };

    if (superClassName.empty() != (superClass == nullptr))
        fail(line, "class " + name + " resolved against the wrong superclass");
    if (superClass && !superClass->isResolved())
        fail(line, "superclass " + superClass->name + " of class " + name + " is not resolved");

    _super = superClass;
    _depth = superClass ? superClass->_depth + 1 : 0;
    _association = qualifiers.isTrue("Association") || (superClass && superClass->_association);
    _indication = qualifiers.isTrue("Indication") || (superClass && superClass->_indication);
    _abstract = qualifiers.isTrue("Abstract");
    if (_association && _indication)
        fail(line, "class " + name + " cannot be both an association and an indication");

    _properties.clear();
    _methods.clear();
    _propertyIndex.clear();
    _methodIndex.clear();

    // The members this class declares: flags from their qualifiers, and the
    // checks that do not depend on the superclass.
    Index localNames;
    for (std::size_t i = 0; i < localProperties.size(); ++i)
    {
        PropertyDecl& p = localProperties[i];
        applyPropertyFlags(p);
        p.classOrigin = name;
        p.propagated = false;
        if (!localNames.emplace(p.name, i).second)
            fail(p.line, "property " + p.name + " declared twice in class " + name);
        if (p.isReference() && !_association)
            fail(p.line, "reference property " + p.name + " in class " + name +
                             ", which is not an association");
        if ((!p.embeddedInstanceClass.empty() || p.embeddedObject) && p.type != CIMTYPE_STRING)
            fail(p.line, "property " + p.name + " carries an embedded object qualifier but is not a string");
    }
    localNames.clear();
    for (std::size_t i = 0; i < localMethods.size(); ++i)
    {
        MethodDecl& m = localMethods[i];
        m.classOrigin = name;
        m.propagated = false;
        if (!localNames.emplace(m.name, i).second)
            fail(m.line, "method " + m.name + " declared twice in class " + name);
    }

    if (superClass)
    {
        _properties = superClass->_properties;
        for (PropertyDecl& p : _properties)
            p.propagated = true;
        _methods = superClass->_methods;
        for (MethodDecl& m : _methods)
            m.propagated = true;
        _propertyIndex = superClass->_propertyIndex;
        _methodIndex = superClass->_methodIndex;
    }

    for (const PropertyDecl& local : localProperties)
    {
        const QualifierDecl* ov = local.qualifiers.find("Override");
        if (ov && ov->value.kind != MofValue::STRING && ov->value.kind != MofValue::BOOLEAN)
            fail(local.line, "Override qualifier of property " + local.name + " must name a property");
        std::string target = (ov && ov->value.kind == MofValue::STRING) ? ov->value.text : local.name;
        Index::iterator it = _propertyIndex.find(target);
        if (it == _propertyIndex.end())
        {
            if (ov && ov->value.kind == MofValue::STRING)
                fail(local.line, "property " + local.name + " of class " + name + " overrides " + target +
                                     ", which no superclass declares");
            _propertyIndex.emplace(local.name, _properties.size());
            _properties.push_back(local);
            continue;
        }
        const PropertyDecl& inherited = _properties[it->second];
        if (inherited.type != local.type || inherited.isArray != local.isArray)
            fail(local.line, "property " + local.name + " of class " + name +
                                 " changes the type of the inherited property " + inherited.name +
                                 " (declared in " + inherited.classOrigin + ")");
        PropertyDecl merged = local;
        merged.qualifiers = mergeQualifiers(inherited.qualifiers, local.qualifiers);
        if (!merged.defaultValue)
            merged.defaultValue = inherited.defaultValue;
        applyPropertyFlags(merged);
        std::size_t pos = it->second;
        if (!CaseInsensitive::equal(inherited.name, local.name))
        {
            _propertyIndex.erase(it);
            if (_propertyIndex.count(local.name))
                fail(local.line, "property " + local.name + " of class " + name +
                                     " clashes with an inherited property of the same name");
            _propertyIndex.emplace(local.name, pos);
        }
        _properties[pos] = merged;
    }

    for (const MethodDecl& local : localMethods)
    {
        const QualifierDecl* ov = local.qualifiers.find("Override");
        std::string target = (ov && ov->value.kind == MofValue::STRING) ? ov->value.text : local.name;
        Index::iterator it = _methodIndex.find(target);
        if (it == _methodIndex.end())
        {
            if (ov && ov->value.kind == MofValue::STRING)
                fail(local.line, "method " + local.name + " of class " + name + " overrides " + target +
                                     ", which no superclass declares");
            _methodIndex.emplace(local.name, _methods.size());
            _methods.push_back(local);
            continue;
        }
        const MethodDecl& inherited = _methods[it->second];
        if (inherited.returnType != local.returnType)
            fail(local.line, "method " + local.name + " of class " + name +
                                 " changes the return type of the inherited method");
        MethodDecl merged = local;
        merged.qualifiers = mergeQualifiers(inherited.qualifiers, local.qualifiers);
        std::size_t pos = it->second;
        if (!CaseInsensitive::equal(inherited.name, local.name))
        {
            _methodIndex.erase(it);
            _methodIndex.emplace(local.name, pos);
        }
        _methods[pos] = merged;
    }

    _resolved = true;
}

} // namespace Pegasus
