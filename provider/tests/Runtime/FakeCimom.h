#ifndef ORVSMIS_TEST_FAKECIMOM_H
#define ORVSMIS_TEST_FAKECIMOM_H

// A CIM server behind a CIMOMHandle for the module's own tests: instances
// kept per class name, every call written to a log, and a hook that runs
// inside each call (to look at the module's locks from there).

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMOMHandle.h>

class FakeCimom : public Pegasus::CIMOMHandleRep {
public:
    typedef Pegasus::CIMNamespaceName NS;
    typedef Pegasus::OperationContext Ctx;

    std::vector<std::string> log;
    // Class name -> instance paths (as text) per namespace "ns|class".
    std::map<std::string, std::vector<Pegasus::CIMObjectPath>> instances;
    // Classes the schema knows; others give CIM_ERR_INVALID_CLASS.
    std::set<std::string> classes;
    // Paths whose delete fails with CIM_ERR_FAILED.
    std::set<std::string> failingDeletes;
    std::function<void(const std::string&)> inside;
    Pegasus::CIMObjectPath lastPath;
    bool unloadDisallowed = false;
    std::string openTransaction;

    static std::string text(const Pegasus::String& s) { return std::string(s.getCString()); }
    static std::string key(const NS& ns, const Pegasus::CIMName& cls) {
        return text(ns.getString()) + "|" + text(cls.getString());
    }
    void call(const std::string& what) {
        log.push_back(what);
        if (inside) inside(what);
    }
    void AddInstance(const std::string& ns, const std::string& cls, const std::string& id) {
        classes.insert(cls);
        Pegasus::Array<Pegasus::CIMKeyBinding> keys;
        keys.append(Pegasus::CIMKeyBinding(Pegasus::CIMName("InstanceID"), Pegasus::String(id.c_str()),
            Pegasus::CIMKeyBinding::STRING));
        instances[ns + "|" + cls].push_back(
            Pegasus::CIMObjectPath(Pegasus::String(), NS(ns.c_str()), Pegasus::CIMName(cls.c_str()), keys));
    }
    size_t Count(const std::string& ns, const std::string& cls) { return instances[ns + "|" + cls].size(); }

    Pegasus::CIMInstance getInstance(const Ctx&, const NS&, const Pegasus::CIMObjectPath& p, Pegasus::Boolean,
        Pegasus::Boolean, Pegasus::Boolean, const Pegasus::CIMPropertyList&) override {
        lastPath = p;
        call("getInstance");
        return Pegasus::CIMInstance(p.getClassName());
    }
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(const Ctx&, const NS& ns,
        const Pegasus::CIMName& cls, Pegasus::Boolean, Pegasus::Boolean, Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override {
        call("enumerateInstances " + key(ns, cls));
        Pegasus::Array<Pegasus::CIMInstance> out;
        for (size_t i = 0; i < instances[key(ns, cls)].size(); ++i) out.append(Pegasus::CIMInstance(cls));
        return out;
    }
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(const Ctx&, const NS& ns,
        const Pegasus::CIMName& cls) override {
        call("enumerateInstanceNames " + key(ns, cls));
        if (classes.count(text(cls.getString())) == 0)
            throw Pegasus::CIMException(Pegasus::CIM_ERR_INVALID_CLASS, cls.getString());
        Pegasus::Array<Pegasus::CIMObjectPath> out;
        for (const Pegasus::CIMObjectPath& p : instances[key(ns, cls)]) out.append(p);
        return out;
    }
    Pegasus::CIMObjectPath createInstance(const Ctx&, const NS& ns, const Pegasus::CIMInstance& i) override {
        call("createInstance " + key(ns, i.getClassName()));
        return i.getPath();
    }
    void modifyInstance(const Ctx&, const NS& ns, const Pegasus::CIMInstance& i, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override {
        call("modifyInstance " + key(ns, i.getClassName()));
    }
    void deleteInstance(const Ctx&, const NS& ns, const Pegasus::CIMObjectPath& p) override {
        const std::string path = text(p.toString());
        call("deleteInstance " + path);
        if (failingDeletes.count(path) != 0)
            throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "refused");
        std::vector<Pegasus::CIMObjectPath>& list = instances[key(ns, p.getClassName())];
        for (size_t i = 0; i < list.size(); ++i) {
            if (list[i].identical(p)) {
                list.erase(list.begin() + static_cast<long>(i));
                return;
            }
        }
        throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_FOUND, p.toString());
    }
    Pegasus::Array<Pegasus::CIMObject> associators(const Ctx&, const NS&, const Pegasus::CIMObjectPath& p,
        const Pegasus::CIMName&, const Pegasus::CIMName&, const Pegasus::String&, const Pegasus::String&,
        Pegasus::Boolean, Pegasus::Boolean, const Pegasus::CIMPropertyList&) override {
        lastPath = p;
        call("associators");
        return Pegasus::Array<Pegasus::CIMObject>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(const Ctx&, const NS&,
        const Pegasus::CIMObjectPath& p, const Pegasus::CIMName&, const Pegasus::CIMName&,
        const Pegasus::String&, const Pegasus::String&) override {
        lastPath = p;
        call("associatorNames");
        Pegasus::Array<Pegasus::CIMObjectPath> out;
        out.append(p);
        return out;
    }
    Pegasus::Array<Pegasus::CIMObject> references(const Ctx&, const NS&, const Pegasus::CIMObjectPath& p,
        const Pegasus::CIMName&, const Pegasus::String&, Pegasus::Boolean, Pegasus::Boolean,
        const Pegasus::CIMPropertyList&) override {
        lastPath = p;
        call("references");
        return Pegasus::Array<Pegasus::CIMObject>();
    }
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(const Ctx&, const NS&,
        const Pegasus::CIMObjectPath& p, const Pegasus::CIMName&, const Pegasus::String&) override {
        lastPath = p;
        call("referenceNames");
        return Pegasus::Array<Pegasus::CIMObjectPath>();
    }
    Pegasus::CIMValue getProperty(const Ctx&, const NS&, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName&) override {
        throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "getProperty");
    }
    void setProperty(const Ctx&, const NS&, const Pegasus::CIMObjectPath&, const Pegasus::CIMName&,
        const Pegasus::CIMValue&) override {
        throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "setProperty");
    }
    Pegasus::CIMValue invokeMethod(const Ctx&, const NS&, const Pegasus::CIMObjectPath&,
        const Pegasus::CIMName&, const Pegasus::Array<Pegasus::CIMParamValue>&,
        Pegasus::Array<Pegasus::CIMParamValue>&) override {
        throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "invokeMethod");
    }
    void disallowProviderUnload() override {
        unloadDisallowed = true;
        call("disallowProviderUnload");
    }
    void allowProviderUnload() override { call("allowProviderUnload"); }
    void beginTransaction(const NS& ns) override {
        call("beginTransaction " + text(ns.getString()));
        if (!openTransaction.empty())
            throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "a transaction is already open");
        openTransaction = text(ns.getString());
    }
    void commitTransaction() override {
        call("commitTransaction");
        if (openTransaction.empty()) throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "none open");
        openTransaction.clear();
    }
    void rollBackTransaction() override {
        call("rollBackTransaction");
        if (openTransaction.empty()) throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "none open");
        openTransaction.clear();
    }
};

#endif
