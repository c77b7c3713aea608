#ifndef ORVSMIS_SMISPROVIDER_H
#define ORVSMIS_SMISPROVIDER_H

#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMIndicationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

#include "ControllerManager.h"
#include "DataFlow.h"

namespace orvsmis {

class SmisDataCenter;
class RawDataCenter;
class DataflowSource;

// The module's face towards the CIM server. It serves no instances: they are
// in the server's repository, written there by each load. Only methods and
// associators reach its logic; each load is bracketed by the DataFlow
// callbacks into one repository transaction.
class SMISProvider : public Pegasus::CIMMethodProvider,
                     public Pegasus::CIMAssociationProvider,
                     public Pegasus::CIMInstanceProvider,
                     public Pegasus::CIMIndicationProvider,
                     public DataFlowDelegate {
public:
    static const char* const SMIS_CLIENT_TYPE_FILE;
    static const char* const SMIS_CLIENT_TYPE_TYPE1;
    static const char* const SMIS_CLIENT_TYPE_DEFAULT;
    static int m_clientType;
    static bool m_bEnableCopyService;

    SMISProvider();
    ~SMISProvider() override;

    void initialize(Pegasus::CIMOMHandle& cimom) override;
    void terminate() override;

    void invokeMethod(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectReference,
        const Pegasus::CIMName& methodName, const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::MethodResultResponseHandler& handler) override;

    void getInstance(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        const Pegasus::Boolean includeQualifiers, const Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList, Pegasus::InstanceResponseHandler& handler) override;
    void enumerateInstances(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& classReference,
        const Pegasus::Boolean includeQualifiers, const Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList, Pegasus::InstanceResponseHandler& handler) override;
    void enumerateInstanceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMObjectPath& classReference, Pegasus::ObjectPathResponseHandler& handler) override;
    void modifyInstance(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        const Pegasus::CIMInstance& instanceObject, const Pegasus::Boolean includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList, Pegasus::ResponseHandler& handler) override;
    void createInstance(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        const Pegasus::CIMInstance& instanceObject, Pegasus::ObjectPathResponseHandler& handler) override;
    void deleteInstance(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& instanceReference,
        Pegasus::ResponseHandler& handler) override;

    void associators(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& associationClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, const Pegasus::Boolean includeQualifiers,
        const Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList,
        Pegasus::ObjectResponseHandler& handler) override;
    void associatorNames(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& associationClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, Pegasus::ObjectPathResponseHandler& handler) override;
    void references(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role, const Pegasus::Boolean includeQualifiers,
        const Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList,
        Pegasus::ObjectResponseHandler& handler) override;
    void referenceNames(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        Pegasus::ObjectPathResponseHandler& handler) override;

    void enableIndications(Pegasus::IndicationResponseHandler& handler) override;
    void disableIndications() override;
    void createSubscription(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& subscriptionName,
        const Pegasus::Array<Pegasus::CIMObjectPath>& classNames, const Pegasus::CIMPropertyList& propertyList,
        const Pegasus::Uint16 repeatNotificationPolicy) override;
    void modifySubscription(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& subscriptionName,
        const Pegasus::Array<Pegasus::CIMObjectPath>& classNames, const Pegasus::CIMPropertyList& propertyList,
        const Pegasus::Uint16 repeatNotificationPolicy) override;
    void deleteSubscription(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& subscriptionName,
        const Pegasus::Array<Pegasus::CIMObjectPath>& classNames) override;

    bool BeforeReceiveAllData(EventArgs* args) override;
    bool AfterReceiveAllData(EventArgs* args) override;
    bool BeforeReceiveDataPerType(EventArgs* args) override;
    bool AfterReceiveDataPerType(EventArgs* args) override;

    bool validateNamespace(const Pegasus::CIMObjectPath& path);
    void Clean();
    void Failover();
    void RegisterEvents();
    static int GetOperationMode();

private:
    bool m_bEnableIndication;
    SmisDataCenter* m_smisDataCenter;
    RawDataCenter* m_rawDataCenter;
    ControllerManager m_controllerManager;
};

// The module-wide objects, made once by CreateProvider.
SMISProvider* CreateProvider();
SMISProvider* GetProvider();
DataFlow* GetDataFlowService();
DataflowSource* GetDataFlowSource();

}  // namespace orvsmis

#endif
