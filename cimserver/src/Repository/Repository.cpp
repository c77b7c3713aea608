#include <Pegasus/Repository/Repository.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/ClassCache.h>
#include <Pegasus/Repository/InstanceCodec.h>
#include <Pegasus/Repository/NamespaceStore.h>
#include <Pegasus/Repository/ObjectPathNormalizer.h>
#include <Pegasus/Repository/RepositoryConnection.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <filesystem>
#include <set>
#include <system_error>
#include <unordered_map>

namespace Pegasus {

namespace {

String text(const std::string& s)
{
    return String::fromUtf8(s);
}

std::string utf8(const String& s)
{
    return s.toUtf8();
}

std::string lower(const std::string& s)
{
    return ObjectPathNormalizer::lower(s);
}

[[noreturn]] void fail(CIMStatusCode code, const std::string& message)
{
    throw CIMException(code, text(message));
}

// Every failure leaves as a CIMException; SQLite and value-type faults become
// CIM_ERR_FAILED naming the operation.
template <class F> auto guarded(const char* operation, F f) -> decltype(f())
{
    try {
        return f();
    } catch (const CIMException&) {
        throw;
    } catch (const SqliteError& e) {
        fail(CIM_ERR_FAILED, std::string(operation) + ": " + e.what());
    } catch (const TypeMismatchException& e) {
        fail(CIM_ERR_TYPE_MISMATCH, std::string(operation) + ": " + utf8(e.getMessage()));
    } catch (const Exception& e) {
        fail(CIM_ERR_FAILED, std::string(operation) + ": " + utf8(e.getMessage()));
    }
}

std::string pathText(const CIMObjectPath& path)
{
    return utf8(path.toString());
}

// Class and keys only: the repository's own namespace and host are the caller's.
CIMObjectPath localPath(const CIMObjectPath& path)
{
    return CIMObjectPath(String(), CIMNamespaceName(), path.getClassName(), path.getKeyBindings());
}

bool typeFits(const PropertyDecl& decl, const CIMValue& value)
{
    if (value.isNull())
        return true;
    if (value.isArray() != decl.isArray)
        return false;
    CIMType type = value.getType();
    if (type == decl.type)
        return true;
    bool embedded = !decl.embeddedInstanceClass.empty() || decl.embeddedObject;
    return decl.type == CIMTYPE_STRING && embedded &&
        (type == CIMTYPE_INSTANCE || type == CIMTYPE_OBJECT);
}

// Drops what the caller did not ask for; without deep inheritance also the
// properties the requested class does not define.
void present(CIMInstance& instance, const ClassDecl* requested, Boolean deepInheritance,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    if (!deepInheritance && requested) {
        for (Uint32 i = instance.getPropertyCount(); i-- > 0;) {
            if (!requested->findProperty(utf8(instance.getProperty(i).getName().getString())))
                instance.removeProperty(i);
        }
    }
    instance.instanceFilter(includeQualifiers, includeClassOrigin, propertyList);
}

bool roleMatches(const String& filter, const std::string& roleLower)
{
    return filter.size() == 0 || lower(utf8(filter)) == roleLower;
}

} // namespace

struct Repository::Found {
    CIMObjectPath path;
    CIMInstance instance;
};

Repository::Repository(const std::string& directory, const SchemaManager& schema)
    : _directory(directory), _schema(schema), _normalizer(new ObjectPathNormalizer(schema)),
      _classCache(new ClassCache)
{
    std::error_code ec;
    std::filesystem::create_directories(directory, ec);
    if (ec)
        fail(CIM_ERR_FAILED, "cannot create repository folder " + directory + ": " + ec.message());
    for (const std::string& ns : schema.namespaces()) {
        std::string key = lower(ns);
        if (_stores.count(key))
            continue;
        try {
            _stores[key].reset(new NamespaceStore(ns, databaseFile(CIMNamespaceName(text(ns)))));
        } catch (const SqliteError& e) {
            fail(CIM_ERR_FAILED, std::string("cannot open the repository: ") + e.what());
        }
    }
}

Repository::~Repository()
{
    // Stores roll back an open transaction as they close.
    _stores.clear();
}

NamespaceStore* Repository::findStore(const std::string& ns) const
{
    auto it = _stores.find(lower(ns));
    return it == _stores.end() ? nullptr : it->second.get();
}

NamespaceStore& Repository::store(const CIMNamespaceName& ns) const
{
    NamespaceStore* s = findStore(utf8(ns.getString()));
    if (!s)
        fail(CIM_ERR_INVALID_NAMESPACE, "namespace " + utf8(ns.getString()) + " does not exist");
    return *s;
}

std::string Repository::databaseFile(const CIMNamespaceName& ns) const
{
    std::string name = lower(utf8(ns.getString()));
    for (char& c : name)
        if (c == '/')
            c = '#';
    std::string dir = _directory;
    if (!dir.empty() && dir.back() != '/')
        dir.push_back('/');
    return dir + name + ".db";
}

Array<CIMNamespaceName> Repository::namespaces() const
{
    Array<CIMNamespaceName> out;
    for (const auto& entry : _stores)
        out.append(CIMNamespaceName(text(entry.second->nameSpace())));
    return out;
}

static const ClassDecl& requireClass(const SchemaManager& schema, const NamespaceStore& store,
    const CIMName& className)
{
    if (className.isNull())
        fail(CIM_ERR_INVALID_PARAMETER, "no class name given");
    const ClassDecl* cls = schema.findClass(store.nameSpace(), utf8(className.getString()));
    if (!cls)
        fail(CIM_ERR_INVALID_CLASS, "class " + utf8(className.getString()) +
            " does not exist in namespace " + store.nameSpace());
    return *cls;
}

CIMInstance Repository::validated(const ClassDecl& cls, const CIMInstance& instance) const
{
    const ClassCache::Entry& entry = _classCache->get(cls);
    CIMInstance out(entry.name);
    std::vector<bool> seen(entry.properties.size());
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty given = instance.getProperty(i);
        const ClassCache::Property* prop = entry.find(given.getName().getString());
        if (!prop)
            fail(CIM_ERR_NO_SUCH_PROPERTY, "class " + cls.name + " has no property " +
                utf8(given.getName().getString()));
        const PropertyDecl& decl = *prop->decl;
        CIMValue value = given.getValue();
        if (!typeFits(decl, value))
            fail(CIM_ERR_TYPE_MISMATCH, "property " + cls.name + "." + decl.name + " is " +
                cimTypeToString(decl.type) + (decl.isArray ? "[]" : "") + ", the value given is " +
                cimTypeToString(value.getType()) + (value.isArray() ? "[]" : ""));
        if (value.isNull() && (value.getType() != decl.type || value.isArray() != decl.isArray))
            value.setNullValue(decl.type, decl.isArray);
        size_t index = size_t(prop - entry.properties.data());
        if (seen[index])
            fail(CIM_ERR_INVALID_PARAMETER, "property " + cls.name + "." + decl.name +
                " is given twice");
        seen[index] = true;
        out.addProperty(CIMProperty(prop->name, value, decl.arraySize, prop->referenceClass,
            prop->origin, decl.propagated));
    }
    return out;
}

CIMObjectPath Repository::keyPath(const ClassDecl& cls, const CIMInstance& instance) const
{
    const ClassCache::Entry& entry = _classCache->get(cls);
    Array<CIMKeyBinding> keys;
    keys.reserveCapacity(Uint32(entry.keys.size()));
    for (size_t k : entry.keys) {
        const ClassCache::Property& key = entry.properties[k];
        Uint32 index = instance.findProperty(key.name);
        if (index == PEG_NOT_FOUND || instance.getProperty(index).getValue().isNull())
            fail(CIM_ERR_INVALID_PARAMETER, "key property " + key.decl->name + " of class " +
                cls.name + " is missing or null");
        keys.append(CIMKeyBinding(key.name, instance.getProperty(index).getValue()));
    }
    return CIMObjectPath(String(), CIMNamespaceName(), entry.name, keys);
}

std::string Repository::lookupKey(const NamespaceStore& store, const CIMObjectPath& path) const
{
    requireClass(_schema, store, path.getClassName());
    return _normalizer->canonical(localPath(path), store.nameSpace());
}

std::vector<Repository::RefRow> Repository::referenceRows(NamespaceStore& store,
    const ClassDecl& cls, const CIMConstInstance& instance) const
{
    std::vector<RefRow> rows;
    NameDictionary& names = store.names();
    Uint32 assocClass = names.nameId(text(cls.name));
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty p = instance.getProperty(i);
        const CIMValue& value = p.getValue();
        if (value.getType() != CIMTYPE_REFERENCE || value.isNull() || value.isArray())
            continue;
        CIMObjectPath target;
        value.get(target);
        RefRow row;
        row.target = ObjectPathNormalizer::hash(_normalizer->canonical(target, store.nameSpace()));
        row.role = names.nameId(text(lower(utf8(p.getName().getString()))));
        row.assocClass = assocClass;
        rows.push_back(row);
    }
    return rows;
}

void Repository::indexReferences(RepositoryConnection& connection, NamespaceStore& store,
    int64_t id, const ClassDecl& cls, const CIMConstInstance& instance) const
{
    for (const RefRow& row : referenceRows(store, cls, instance))
        connection.insertReference(row.target, id, row.role, row.assocClass);
}

void Repository::unindexReferences(RepositoryConnection& connection, NamespaceStore& store,
    int64_t id, const ClassDecl& cls, const CIMConstInstance& instance) const
{
    for (const RefRow& row : referenceRows(store, cls, instance))
        connection.deleteReference(row.target, id, row.role);
}

namespace {

// The canonical key of an instance from its class and key values.
std::string keyText(const ObjectPathNormalizer& normalizer, const std::string& nameSpace,
    const CIMName& className, const std::vector<InstanceCodec::KeyValue>& keys)
{
    std::vector<std::string> keyNames;
    keyNames.reserve(keys.size());
    for (const InstanceCodec::KeyValue& k : keys)
        keyNames.push_back(utf8(k.name.getString()));
    std::vector<ObjectPathNormalizer::KeyValue> values;
    values.reserve(keys.size());
    for (size_t i = 0; i < keys.size(); ++i)
        values.push_back(ObjectPathNormalizer::KeyValue{&keyNames[i], keys[i].value.getType(),
            &keys[i].value});
    return normalizer.canonical(utf8(className.getString()), values, nameSpace);
}

} // namespace

std::string Repository::storedKey(const NamespaceStore& store, const std::string& data) const
{
    CIMName className;
    std::vector<InstanceCodec::KeyValue> keys;
    if (!InstanceCodec::decodeKeyValues(data, store.names(), className, keys))
        return _normalizer->canonical(InstanceCodec::decodeInstancePath(data, store.names()),
            store.nameSpace());
    return keyText(*_normalizer, store.nameSpace(), className, keys);
}


bool Repository::findStored(RepositoryConnection& connection, const NamespaceStore& store,
    const std::string& key, int64_t* id, std::string* data) const
{
    bool found = false;
    connection.forEachWithKey(ObjectPathNormalizer::hash(key),
        [&](int64_t rowId, const std::string& rowData) {
            // Another path of the same hash is passed over.
            if (storedKey(store, rowData) != key)
                return true;
            if (id)
                *id = rowId;
            if (data)
                *data = rowData;
            found = true;
            return false;
        });
    return found;
}

bool Repository::findDecoded(RepositoryConnection& connection, const NamespaceStore& store,
    const std::string& key, bool withClassOrigin, CIMInstance& instance) const
{
    bool found = false;
    std::vector<InstanceCodec::KeyValue> keys;
    connection.forEachWithKey(ObjectPathNormalizer::hash(key),
        [&](int64_t, const std::string& rowData) {
            CIMInstance decoded = InstanceCodec::decode(rowData.data(), rowData.size(),
                store.names(), withClassOrigin, &keys);
            std::string text = keys.empty()
                ? _normalizer->canonical(decoded.getPath(), store.nameSpace())
                : keyText(*_normalizer, store.nameSpace(), decoded.getClassName(), keys);
            // Another path of the same hash is passed over.
            if (text != key)
                return true;
            instance = decoded;
            found = true;
            return false;
        });
    return found;
}

bool Repository::referenceNameOf(const NamespaceStore& store, const std::string& data,
    const std::string& role, const std::string& target, CIMObjectPath& path) const
{
    CIMName className;
    std::vector<InstanceCodec::KeyValue> keys;
    if (InstanceCodec::decodeKeyValues(data, store.names(), className, keys)) {
        for (const InstanceCodec::KeyValue& k : keys) {
            const CIMValue& v = k.value;
            if (v.getType() != CIMTYPE_REFERENCE || v.isNull() || v.isArray() ||
                lower(utf8(k.name.getString())) != role)
                continue;
            CIMObjectPath referenced;
            v.get(referenced);
            if (_normalizer->canonical(referenced, store.nameSpace()) != target)
                return false;
            Array<CIMKeyBinding> bindings;
            for (const InstanceCodec::KeyValue& b : keys)
                bindings.append(CIMKeyBinding(b.name, b.value));
            path = CIMObjectPath(String(), CIMNamespaceName(), className, bindings);
            return true;
        }
    }
    // The role is not a key (or an older encoding): the whole instance.
    CIMInstance assoc = InstanceCodec::decode(data, store.names(), false);
    if (!refersTo(store, assoc, role, target))
        return false;
    path = assoc.getPath();
    return true;
}

bool Repository::refersTo(const NamespaceStore& store, const CIMConstInstance& assoc,
    const std::string& role, const std::string& target) const
{
    for (Uint32 i = 0; i < assoc.getPropertyCount(); ++i) {
        CIMConstProperty p = assoc.getProperty(i);
        const CIMValue& v = p.getValue();
        if (v.getType() != CIMTYPE_REFERENCE || v.isNull() || v.isArray())
            continue;
        if (lower(utf8(p.getName().getString())) != role)
            continue;
        CIMObjectPath path;
        v.get(path);
        return _normalizer->canonical(path, store.nameSpace()) == target;
    }
    return false;
}

CIMInstance Repository::getInstance(const CIMNamespaceName& ns, const CIMObjectPath& path,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    RepositoryAccess access)
{
    return guarded("getInstance", [&] {
        NamespaceStore& st = store(ns);
        std::string key = lookupKey(st, path);
        CIMInstance instance;
        {
            NamespaceStore::Session session(st, access, false);
            if (!findDecoded(session.connection(), st, key, includeClassOrigin, instance))
                fail(CIM_ERR_NOT_FOUND, "instance " + pathText(path) + " does not exist");
            session.commit();
        }
        present(instance, nullptr, true, includeQualifiers, includeClassOrigin, propertyList);
        return instance;
    });
}

Array<CIMInstance> Repository::enumerateInstances(const CIMNamespaceName& ns,
    const CIMName& className, Boolean deepInheritance, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, RepositoryAccess access)
{
    Array<CIMInstance> out;
    enumerateInstances(ns, className, deepInheritance, includeQualifiers, includeClassOrigin,
        propertyList, access, [&out](CIMInstance& instance) { out.append(instance); });
    return out;
}

void Repository::enumerateInstances(const CIMNamespaceName& ns, const CIMName& className,
    Boolean deepInheritance, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, RepositoryAccess access, const InstanceSink& each)
{
    guarded("enumerateInstances", [&] {
        NamespaceStore& st = store(ns);
        const ClassDecl& cls = requireClass(_schema, st, className);
        std::vector<std::string> classes{cls.name};
        for (const std::string& sub : _schema.registry(st.nameSpace())->subclassesOf(cls.name, true))
            classes.push_back(sub);
        NamespaceStore::Session session(st, access, false);
        for (const std::string& c : classes) {
            Uint32 classId = st.names().knownNameId(text(c));
            if (classId == 0)
                continue; // never stored
            session.connection().forEachOfClass(classId,
                [&](const std::string& data) {
                    CIMInstance instance = InstanceCodec::decode(data, st.names(), includeClassOrigin);
                    present(instance, &cls, deepInheritance, includeQualifiers,
                        includeClassOrigin, propertyList);
                    each(instance);
                });
        }
        session.commit();
    });
}

Array<CIMObjectPath> Repository::enumerateInstanceNames(const CIMNamespaceName& ns,
    const CIMName& className, RepositoryAccess access)
{
    Array<CIMObjectPath> out;
    enumerateInstanceNames(ns, className, access, [&out](CIMObjectPath& path) { out.append(path); });
    return out;
}

void Repository::enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& className,
    RepositoryAccess access, const PathSink& each)
{
    guarded("enumerateInstanceNames", [&] {
        NamespaceStore& st = store(ns);
        const ClassDecl& cls = requireClass(_schema, st, className);
        std::vector<std::string> classes{cls.name};
        for (const std::string& sub : _schema.registry(st.nameSpace())->subclassesOf(cls.name, true))
            classes.push_back(sub);
        NamespaceStore::Session session(st, access, false);
        for (const std::string& c : classes) {
            Uint32 classId = st.names().knownNameId(text(c));
            if (classId == 0)
                continue; // never stored
            session.connection().forEachOfClass(classId,
                [&](const std::string& data) {
                    CIMObjectPath path = InstanceCodec::decodeInstancePath(data, st.names());
                    each(path);
                });
        }
        session.commit();
    });
}

CIMObjectPath Repository::createInstance(const CIMNamespaceName& ns, const CIMInstance& instance,
    RepositoryAccess access)
{
    return guarded("createInstance", [&] {
        NamespaceStore& st = store(ns);
        if (instance.isUninitialized())
            fail(CIM_ERR_INVALID_PARAMETER, "no instance given");
        const ClassDecl& cls = requireClass(_schema, st, instance.getClassName());
        if (cls.isAbstract())
            fail(CIM_ERR_INVALID_CLASS, "class " + cls.name +
                " is abstract: it cannot have instances of its own");
        const CIMName& pathClass = instance.getPath().getClassName();
        if (!pathClass.isNull() && !pathClass.equal(instance.getClassName()))
            fail(CIM_ERR_INVALID_PARAMETER, "the path of the new instance names class " +
                utf8(pathClass.getString()) + ", the instance is of class " + cls.name);
        CIMInstance stored = validated(cls, instance);
        CIMObjectPath path = keyPath(cls, stored);
        stored.setPath(path);
        std::vector<ObjectPathNormalizer::KeyValue> keyValues;
        const ClassCache::Entry& entry = _classCache->get(cls);
        for (size_t k : entry.keys) {
            const ClassCache::Property& p = entry.properties[k];
            keyValues.push_back(ObjectPathNormalizer::KeyValue{&p.decl->name, p.decl->type,
                &stored.getProperty(stored.findProperty(p.name)).getValue()});
        }
        std::string key = _normalizer->canonical(cls.name, keyValues, st.nameSpace());
        std::string data = InstanceCodec::encode(stored, st.names());
        Uint32 classId = st.names().nameId(text(cls.name));
        bool hasReferences = _classCache->get(cls).hasReferences;

        NamespaceStore::Session session(st, access, true, true);
        RepositoryConnection& c = session.connection();
        if (findStored(c, st, key, nullptr, nullptr))
            fail(CIM_ERR_ALREADY_EXISTS, "instance " + pathText(path) + " already exists");
        int64_t id = c.insertInstance(ObjectPathNormalizer::hash(key), classId, data);
        try {
            if (hasReferences)
                indexReferences(c, st, id, cls, stored);
            st.names().storePending(c);
        } catch (...) {
            // Inside the open transaction there is no savepoint: undo by hand.
            if (hasReferences)
                unindexReferences(c, st, id, cls, stored);
            c.deleteInstance(id);
            throw;
        }
        session.commit();
        return path;
    });
}

void Repository::modifyInstance(const CIMNamespaceName& ns, const CIMInstance& instance,
    Boolean, const CIMPropertyList& propertyList, RepositoryAccess access)
{
    guarded("modifyInstance", [&] {
        NamespaceStore& st = store(ns);
        if (instance.isUninitialized())
            fail(CIM_ERR_INVALID_PARAMETER, "no instance given");
        const ClassDecl& cls = requireClass(_schema, st, instance.getClassName());
        const CIMObjectPath& given = instance.getPath();
        if (!given.getClassName().isNull() && !given.getClassName().equal(instance.getClassName()))
            fail(CIM_ERR_INVALID_PARAMETER, "the path " + pathText(given) +
                " does not name an instance of class " + cls.name);
        CIMInstance changes = validated(cls, instance);
        CIMObjectPath path = given.getKeyBindings().size() > 0 || cls.keyProperties().empty()
            ? localPath(given) : keyPath(cls, changes);
        path.setClassName(CIMName(text(cls.name)));
        std::string key = _normalizer->canonical(path, st.nameSpace());

        NamespaceStore::Session session(st, access, true);
        RepositoryConnection& c = session.connection();
        int64_t id = 0;
        std::string data;
        if (!findStored(c, st, key, &id, &data))
            fail(CIM_ERR_NOT_FOUND, "instance " + pathText(path) + " does not exist");
        CIMInstance stored = InstanceCodec::decode(data, st.names());
        bool hasReferences = _classCache->get(cls).hasReferences;
        if (hasReferences)
            unindexReferences(c, st, id, cls, stored);

        // Keys name the instance: a given key must keep its value.
        for (const PropertyDecl* k : cls.keyProperties()) {
            CIMName keyName(text(k->name));
            Uint32 gi = changes.findProperty(keyName);
            Uint32 si = stored.findProperty(keyName);
            if (gi == PEG_NOT_FOUND || si == PEG_NOT_FOUND)
                continue;
            if (!changes.getProperty(gi).getValue().equal(stored.getProperty(si).getValue()))
                fail(CIM_ERR_INVALID_PARAMETER, "key property " + k->name + " of " +
                    pathText(path) + " cannot be changed");
        }

        auto isKey = [&](const CIMName& name) {
            const PropertyDecl* d = cls.findProperty(utf8(name.getString()));
            return d && d->isKey;
        };
        auto replace = [&](const CIMName& name) {
            Uint32 si = stored.findProperty(name);
            if (si != PEG_NOT_FOUND)
                stored.removeProperty(si);
            Uint32 gi = changes.findProperty(name);
            if (gi != PEG_NOT_FOUND)
                stored.addProperty(changes.getProperty(gi).clone());
        };
        if (propertyList.isNull()) {
            // Every non-key property is replaced; those not given are removed.
            for (Uint32 i = stored.getPropertyCount(); i-- > 0;)
                if (!isKey(stored.getProperty(i).getName()))
                    stored.removeProperty(i);
            for (Uint32 i = 0; i < changes.getPropertyCount(); ++i) {
                CIMProperty p = changes.getProperty(i);
                if (!isKey(p.getName()))
                    stored.addProperty(p.clone());
            }
        } else {
            for (Uint32 i = 0; i < propertyList.size(); ++i) {
                const CIMName& name = propertyList[i];
                const PropertyDecl* d = cls.findProperty(utf8(name.getString()));
                if (!d)
                    fail(CIM_ERR_NO_SUCH_PROPERTY, "class " + cls.name + " has no property " +
                        utf8(name.getString()));
                if (!d->isKey)
                    replace(CIMName(text(d->name)));
            }
        }
        c.updateInstance(id, InstanceCodec::encode(stored, st.names()));
        if (hasReferences)
            indexReferences(c, st, id, cls, stored);
        st.names().storePending(c);
        session.commit();
    });
}

void Repository::deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& path,
    RepositoryAccess access)
{
    guarded("deleteInstance", [&] {
        NamespaceStore& st = store(ns);
        std::string key = lookupKey(st, path);
        const ClassDecl& cls = requireClass(_schema, st, path.getClassName());
        NamespaceStore::Session session(st, access, true);
        RepositoryConnection& c = session.connection();
        int64_t id = 0;
        std::string data;
        if (!findStored(c, st, key, &id, &data))
            fail(CIM_ERR_NOT_FOUND, "instance " + pathText(path) + " does not exist");
        if (_classCache->get(cls).hasReferences)
            unindexReferences(c, st, id, cls, InstanceCodec::decode(data, st.names()));
        c.deleteInstance(id);
        st.names().storePending(c);
        session.commit();
    });
}

void Repository::collect(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, bool associators, bool wantInstances, RepositoryAccess access,
    const std::function<void(Found&)>& emit) const
{
    NamespaceStore& st = store(ns);
    const ClassRegistry& registry = *_schema.registry(st.nameSpace());
    if (objectName.getClassName().isNull())
        fail(CIM_ERR_INVALID_PARAMETER, "no object name given");
    std::string target = _normalizer->canonical(objectName, st.nameSpace());
    std::string assocFilter = associators ? utf8(assocClass.getString())
                                          : utf8(resultClass.getString());

    struct Row {
        int64_t assoc;
        std::string role;
    };
    std::vector<Row> rows;
    std::set<int64_t> seenAssocs;
    // Far objects found, by namespace, then canonical path: fetched afterwards.
    struct Far {
        std::string ns;
        std::string key;
    };
    std::vector<Far> far;
    std::set<std::string> seenFar;

    {
        NamespaceStore::Session session(st, access, false);
        RepositoryConnection& c = session.connection();
        // Rows are filed under the hash of their target: each is checked
        // against the association's own reference before it counts.
        std::unordered_map<int64_t, std::string> nameText;
        auto textOf = [&](int64_t id) -> const std::string& {
            auto it = nameText.find(id);
            if (it == nameText.end())
                it = nameText.emplace(id, utf8(st.names().textOf(Uint32(id)))).first;
            return it->second;
        };
        c.forEachReferenceTo(ObjectPathNormalizer::hash(target),
            [&](int64_t assoc, int64_t roleId, int64_t classId) {
                const std::string& cls = textOf(classId);
                if (!assocFilter.empty() && !registry.isSubclassOf(cls, assocFilter))
                    return;
                const std::string& r = textOf(roleId);
                if (!roleMatches(role, r))
                    return;
                rows.push_back(Row{assoc, r});
            });
        for (const Row& row : rows) {
            if (!associators) {
                if (seenAssocs.count(row.assoc))
                    continue;
                std::string data;
                if (!c.instanceById(row.assoc, &data))
                    continue;
                Found f;
                if (wantInstances) {
                    f.instance = InstanceCodec::decode(data, st.names());
                    if (!refersTo(st, f.instance, row.role, target))
                        continue;
                    f.path = f.instance.getPath();
                } else if (!referenceNameOf(st, data, row.role, target, f.path)) {
                    continue;
                }
                seenAssocs.insert(row.assoc);
                emit(f);
                continue;
            }
            std::string data;
            if (!c.instanceById(row.assoc, &data))
                continue;
            CIMInstance assoc = InstanceCodec::decode(data, st.names());
            if (!refersTo(st, assoc, row.role, target))
                continue;
            for (Uint32 i = 0; i < assoc.getPropertyCount(); ++i) {
                CIMConstProperty p = assoc.getProperty(i);
                const CIMValue& v = p.getValue();
                if (v.getType() != CIMTYPE_REFERENCE || v.isNull() || v.isArray())
                    continue;
                std::string farRole = lower(utf8(p.getName().getString()));
                if (farRole == row.role || !roleMatches(resultRole, farRole))
                    continue;
                CIMObjectPath farPath;
                v.get(farPath);
                std::string farNs = ObjectPathNormalizer::targetNamespace(farPath, st.nameSpace());
                if (!resultClass.isNull()) {
                    const ClassRegistry* farRegistry = _schema.registry(farNs);
                    if (!farRegistry || !farRegistry->isSubclassOf(
                            utf8(farPath.getClassName().getString()), utf8(resultClass.getString())))
                        continue;
                }
                NamespaceStore* farStore = findStore(farNs);
                if (!farStore)
                    continue;
                std::string key = _normalizer->canonical(localPath(farPath), farStore->nameSpace());
                if (!seenFar.insert(farNs + "\n" + key).second)
                    continue;
                far.push_back(Far{farNs, key});
            }
        }
        if (associators) {
            // Far objects in this namespace are read in the same snapshot.
            for (Far& f : far) {
                if (f.ns != lower(st.nameSpace()))
                    continue;
                Found found;
                if (wantInstances) {
                    if (!findDecoded(c, st, f.key, true, found.instance))
                        continue;
                    found.path = found.instance.getPath();
                } else {
                    std::string data;
                    if (!findStored(c, st, f.key, nullptr, &data))
                        continue;
                    found.path = InstanceCodec::decodeInstancePath(data, st.names());
                }
                emit(found);
            }
        }
        session.commit();
    }
    if (!associators)
        return;
    // Far objects in other namespaces keep that namespace on their path.
    for (Far& f : far) {
        if (f.ns == lower(st.nameSpace()))
            continue;
        NamespaceStore* farStore = findStore(f.ns);
        NamespaceStore::Session session(*farStore, access, false);
        std::string data;
        if (findStored(session.connection(), *farStore, f.key, nullptr, &data)) {
            Found found;
            if (wantInstances) {
                found.instance = InstanceCodec::decode(data, farStore->names());
                found.path = found.instance.getPath();
            } else {
                found.path = InstanceCodec::decodeInstancePath(data, farStore->names());
            }
            found.path.setNameSpace(CIMNamespaceName(text(farStore->nameSpace())));
            if (wantInstances)
                found.instance.setPath(found.path);
            emit(found);
        }
        session.commit();
    }
}

Array<CIMObject> Repository::associators(const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, RepositoryAccess access)
{
    Array<CIMObject> out;
    associators(ns, objectName, assocClass, resultClass, role, resultRole, includeQualifiers,
        includeClassOrigin, propertyList, access, [&out](CIMObject& object) { out.append(object); });
    return out;
}

void Repository::associators(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, RepositoryAccess access, const ObjectSink& each)
{
    guarded("associators", [&] {
        collect(ns, objectName, assocClass, resultClass, role, resultRole, true, true, access,
            [&](Found& f) {
                present(f.instance, nullptr, true, includeQualifiers, includeClassOrigin, propertyList);
                CIMObject object(f.instance);
                f.instance = CIMInstance();
                each(object);
            });
    });
}

Array<CIMObjectPath> Repository::associatorNames(const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, RepositoryAccess access)
{
    Array<CIMObjectPath> out;
    associatorNames(ns, objectName, assocClass, resultClass, role, resultRole, access,
        [&out](CIMObjectPath& path) { out.append(path); });
    return out;
}

void Repository::associatorNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role,
    const String& resultRole, RepositoryAccess access, const PathSink& each)
{
    guarded("associatorNames", [&] {
        collect(ns, objectName, assocClass, resultClass, role, resultRole, true, false, access,
            [&](Found& f) { each(f.path); });
    });
}

Array<CIMObject> Repository::references(const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    RepositoryAccess access)
{
    Array<CIMObject> out;
    references(ns, objectName, resultClass, role, includeQualifiers, includeClassOrigin, propertyList,
        access, [&out](CIMObject& object) { out.append(object); });
    return out;
}

void Repository::references(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, RepositoryAccess access,
    const ObjectSink& each)
{
    guarded("references", [&] {
        collect(ns, objectName, CIMName(), resultClass, role, String(), false, true, access,
            [&](Found& f) {
                present(f.instance, nullptr, true, includeQualifiers, includeClassOrigin, propertyList);
                CIMObject object(f.instance);
                f.instance = CIMInstance();
                each(object);
            });
    });
}

Array<CIMObjectPath> Repository::referenceNames(const CIMNamespaceName& ns,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    RepositoryAccess access)
{
    Array<CIMObjectPath> out;
    referenceNames(ns, objectName, resultClass, role, access,
        [&out](CIMObjectPath& path) { out.append(path); });
    return out;
}

void Repository::referenceNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, RepositoryAccess access, const PathSink& each)
{
    guarded("referenceNames", [&] {
        collect(ns, objectName, CIMName(), resultClass, role, String(), false, false, access,
            [&](Found& f) { each(f.path); });
    });
}

CIMValue Repository::getProperty(const CIMNamespaceName& ns, const CIMObjectPath& path,
    const CIMName& propertyName, RepositoryAccess access)
{
    return guarded("getProperty", [&] {
        NamespaceStore& st = store(ns);
        const ClassDecl& cls = requireClass(_schema, st, path.getClassName());
        const PropertyDecl* decl = cls.findProperty(utf8(propertyName.getString()));
        if (!decl)
            fail(CIM_ERR_NO_SUCH_PROPERTY, "class " + cls.name + " has no property " +
                utf8(propertyName.getString()));
        CIMInstance instance = getInstance(ns, path, false, false, CIMPropertyList(), access);
        Uint32 index = instance.findProperty(CIMName(text(decl->name)));
        if (index == PEG_NOT_FOUND) {
            CIMValue empty;
            empty.setNullValue(decl->type, decl->isArray);
            return empty;
        }
        return instance.getProperty(index).getValue();
    });
}

void Repository::setProperty(const CIMNamespaceName& ns, const CIMObjectPath& path,
    const CIMName& propertyName, const CIMValue& value, RepositoryAccess access)
{
    guarded("setProperty", [&] {
        NamespaceStore& st = store(ns);
        const ClassDecl& cls = requireClass(_schema, st, path.getClassName());
        const PropertyDecl* decl = cls.findProperty(utf8(propertyName.getString()));
        if (!decl)
            fail(CIM_ERR_NO_SUCH_PROPERTY, "class " + cls.name + " has no property " +
                utf8(propertyName.getString()));
        CIMInstance change(CIMName(text(cls.name)));
        CIMObjectPath local = localPath(path);
        local.setClassName(CIMName(text(cls.name)));
        change.setPath(local);
        change.addProperty(CIMProperty(CIMName(text(decl->name)), value));
        Array<CIMName> names;
        names.append(CIMName(text(decl->name)));
        modifyInstance(ns, change, false, CIMPropertyList(names), access);
    });
}

void Repository::beginTransaction(const CIMNamespaceName& ns)
{
    guarded("beginTransaction", [&] {
        std::lock_guard<std::mutex> lock(_transactionMutex);
        NamespaceStore& st = store(ns);
        if (_transactionStore)
            fail(CIM_ERR_FAILED, "beginTransaction: a transaction is already open on namespace " +
                _transactionStore->nameSpace());
        st.beginTransaction();
        _transactionStore = &st;
    });
}

void Repository::commitTransaction()
{
    guarded("commitTransaction", [&] {
        std::lock_guard<std::mutex> lock(_transactionMutex);
        if (!_transactionStore)
            fail(CIM_ERR_FAILED, "commitTransaction: no transaction is open");
        NamespaceStore* st = _transactionStore;
        _transactionStore = nullptr;
        st->commitTransaction();
    });
}

void Repository::rollBackTransaction()
{
    guarded("rollBackTransaction", [&] {
        std::lock_guard<std::mutex> lock(_transactionMutex);
        if (!_transactionStore)
            fail(CIM_ERR_FAILED, "rollBackTransaction: no transaction is open");
        NamespaceStore* st = _transactionStore;
        _transactionStore = nullptr;
        st->rollBackTransaction();
    });
}

Boolean Repository::inTransaction() const
{
    std::lock_guard<std::mutex> lock(_transactionMutex);
    return _transactionStore != nullptr;
}

} // namespace Pegasus
