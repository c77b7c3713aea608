#ifndef Pegasus_OperationContext_h
#define Pegasus_OperationContext_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>

#include <memory>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

// What the server knows about a request beside its parameters (the user,
// languages, subscription details), as named containers.
class PEGASUS_COMMON_LINKAGE OperationContext {
public:
    class PEGASUS_COMMON_LINKAGE Container {
    public:
        virtual ~Container();
        virtual String getName() const = 0;
        virtual Container* clone() const = 0;
        virtual void destroy() = 0;
    };

    OperationContext();
    OperationContext(const OperationContext& context);
    virtual ~OperationContext();
    OperationContext& operator=(const OperationContext& context);

    void clear();
    // Exception when no container of that name is there.
    const Container& get(const String& containerName) const;
    Boolean contains(const String& containerName) const;
    // Replaces the container of the same name, or adds it.
    void set(const Container& container);
    // AlreadyExistsException when a container of the same name is there.
    void insert(const Container& container);
    // Exception when no container of that name is there.
    void remove(const String& containerName);

private:
    struct Destroyer {
        void operator()(Container* c) const { if (c) c->destroy(); }
    };
    std::vector<std::unique_ptr<Container, Destroyer>> _containers;
};

class PEGASUS_COMMON_LINKAGE IdentityContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    IdentityContainer(const OperationContext::Container& container);
    IdentityContainer(const IdentityContainer& container);
    IdentityContainer(const String& userName);
    virtual ~IdentityContainer();
    IdentityContainer& operator=(const IdentityContainer& container);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    String getUserName() const;

private:
    String _userName;
};

class PEGASUS_COMMON_LINKAGE SubscriptionInstanceContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    SubscriptionInstanceContainer(const OperationContext::Container& container);
    SubscriptionInstanceContainer(const SubscriptionInstanceContainer& container);
    SubscriptionInstanceContainer(const CIMInstance& subscriptionInstance);
    virtual ~SubscriptionInstanceContainer();
    SubscriptionInstanceContainer& operator=(const SubscriptionInstanceContainer& container);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    CIMInstance getInstance() const;

private:
    CIMInstance _instance;
};

class PEGASUS_COMMON_LINKAGE SubscriptionFilterConditionContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    SubscriptionFilterConditionContainer(const OperationContext::Container& container);
    SubscriptionFilterConditionContainer(const SubscriptionFilterConditionContainer& container);
    SubscriptionFilterConditionContainer(const String& filterCondition, const String& queryLanguage);
    virtual ~SubscriptionFilterConditionContainer();
    SubscriptionFilterConditionContainer& operator=(const SubscriptionFilterConditionContainer& container);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    String getFilterCondition() const;
    String getQueryLanguage() const;

private:
    String _filterCondition;
    String _queryLanguage;
};

class PEGASUS_COMMON_LINKAGE SubscriptionFilterQueryContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    SubscriptionFilterQueryContainer(const OperationContext::Container& container);
    SubscriptionFilterQueryContainer(const SubscriptionFilterQueryContainer& container);
    SubscriptionFilterQueryContainer(const String& filterQuery, const String& queryLanguage,
                                     const CIMNamespaceName& sourceNameSpace);
    virtual ~SubscriptionFilterQueryContainer();
    SubscriptionFilterQueryContainer& operator=(const SubscriptionFilterQueryContainer& container);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    String getFilterQuery() const;
    String getQueryLanguage() const;
    CIMNamespaceName getSourceNameSpace() const;

private:
    String _filterQuery;
    String _queryLanguage;
    CIMNamespaceName _sourceNameSpace;
};

class PEGASUS_COMMON_LINKAGE SubscriptionInstanceNamesContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    SubscriptionInstanceNamesContainer(const OperationContext::Container& container);
    SubscriptionInstanceNamesContainer(const SubscriptionInstanceNamesContainer& container);
    SubscriptionInstanceNamesContainer(const Array<CIMObjectPath>& subscriptionInstanceNames);
    virtual ~SubscriptionInstanceNamesContainer();
    SubscriptionInstanceNamesContainer& operator=(const SubscriptionInstanceNamesContainer& container);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    Array<CIMObjectPath> getInstanceNames() const;

private:
    Array<CIMObjectPath> _names;
};

class PEGASUS_COMMON_LINKAGE TimeoutContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    TimeoutContainer(const OperationContext::Container& container);
    TimeoutContainer(Uint32 timeout);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    Uint32 getTimeOut() const;

private:
    Uint32 _value;
};

// Languages are kept as their HTTP header text (e.g. "en-US, de;q=0.8").
class PEGASUS_COMMON_LINKAGE AcceptLanguageListContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    AcceptLanguageListContainer(const OperationContext::Container& container);
    AcceptLanguageListContainer(const String& languages);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    String getLanguages() const;

private:
    String _languages;
};

class PEGASUS_COMMON_LINKAGE ContentLanguageListContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    ContentLanguageListContainer(const OperationContext::Container& container);
    ContentLanguageListContainer(const String& languages);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    String getLanguages() const;

private:
    String _languages;
};

class PEGASUS_COMMON_LINKAGE SnmpTrapOidContainer : public virtual OperationContext::Container {
public:
    static const String NAME;
    SnmpTrapOidContainer(const OperationContext::Container& container);
    SnmpTrapOidContainer(const String& snmpTrapOid);
    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();
    String getSnmpTrapOid() const;

private:
    String _snmpTrapOid;
};

PEGASUS_NAMESPACE_END

#endif
