#include <Pegasus/Schema/QualifierList.h>

#include <Pegasus/Schema/CaseInsensitive.h>

namespace Pegasus {

const QualifierDecl* QualifierList::find(const std::string& name) const
{
    for (const QualifierDecl& q : _items)
    {
        if (CaseInsensitive::equal(q.name, name))
            return &q;
    }
    return nullptr;
}

bool QualifierList::isTrue(const std::string& name) const
{
    const QualifierDecl* q = find(name);
    if (!q)
        return false;
    if (q->value.kind == MofValue::BOOLEAN)
        return q->value.boolValue;
    // A qualifier written without a value counts as TRUE; NULL does not.
    return false;
}

std::string QualifierList::stringValue(const std::string& name) const
{
    const QualifierDecl* q = find(name);
    if (!q || q->value.kind != MofValue::STRING)
        return std::string();
    return q->value.text;
}

std::vector<std::string> QualifierList::stringArray(const std::string& name) const
{
    std::vector<std::string> out;
    const QualifierDecl* q = find(name);
    if (!q)
        return out;
    if (q->value.kind == MofValue::STRING)
    {
        out.push_back(q->value.text);
        return out;
    }
    if (q->value.kind != MofValue::ARRAY)
        return out;
    for (const MofValue& e : q->value.elements)
    {
        if (e.kind == MofValue::STRING)
            out.push_back(e.text);
    }
    return out;
}

void QualifierList::set(const QualifierDecl& q)
{
    for (QualifierDecl& existing : _items)
    {
        if (CaseInsensitive::equal(existing.name, q.name))
        {
            existing = q;
            return;
        }
    }
    _items.push_back(q);
}

bool QualifierList::add(const QualifierDecl& q)
{
    if (find(q.name))
        return false;
    _items.push_back(q);
    return true;
}

} // namespace Pegasus
