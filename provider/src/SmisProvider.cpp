#include "SmisProvider.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

#include <strings.h>
#include <unistd.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Tracer.h>

#include "Chassis.h"
#include "CimHandle.h"
#include "CompositeExtent.h"
#include "ComputerSystem.h"
#include "ConfigManager.h"
#include "DataflowSource.h"
#include "DiskDrive.h"
#include "ExecVexview.h"
#include "FixedPath.h"
#include "IndicationHandle.h"
#include "IndicationSender.h"
#include "JobManager.h"
#include "Location.h"
#include "MemoryCautioner.h"
#include "PDmanager.h"
#include "PhysicalPackage.h"
#include "PrimordialPool.h"
#include "RawData.h"
#include "RawDataCenter.h"
#include "RegisteredProfile.h"
#include "RepositoryCleaner.h"
#include "ResultInfo.h"
#include "SmisDataCenter.h"
#include "SmisStatusRecorder.h"
#include "SmisTrace.h"
#include "SoftwareIdentityArray.h"
#include "StorageClientSettingData.h"
#include "StoragePool.h"
#include "ThreadManager.h"

namespace orvsmis {

using namespace Pegasus;

const char* const SMISProvider::SMIS_CLIENT_TYPE_FILE = "/opt/pegasus/etc/conf/client";
const char* const SMISProvider::SMIS_CLIENT_TYPE_TYPE1 = "type1";
const char* const SMISProvider::SMIS_CLIENT_TYPE_DEFAULT = "default";
int SMISProvider::m_clientType = 0;
bool SMISProvider::m_bEnableCopyService = true;

namespace {

// The view thread's and the file source's way back when a load fails.
void failoverOfTheProvider() {
    SMISProvider* provider = GetProvider();
    if (provider != nullptr) provider->Failover();
}

CIMNamespaceName moduleNamespace() {
    return CIMNamespaceName(String::fromUtf8(Singleton<ConfigManager>::Instance()->GetNamespace()));
}

}  // namespace

SMISProvider::SMISProvider()
    : m_bEnableIndication(true),
      m_smisDataCenter(SmisDataCenter::Instance()),
      m_rawDataCenter(RawDataCenter::Instance()),
      m_controllerManager() {}

SMISProvider::~SMISProvider() {}

void SMISProvider::initialize(CIMOMHandle& cimom) {
    SMIS_TRACE(LEVEL2, "SMIS Provider initializing start");
    InitializeStatusFile();
    RecordSmisLayerStatus(0, "not ready");

    ResultInfo info;
    if (!MemoryCautioner::Instance()->PassFlashAreaCheck(info)) {
        SMIS_TRACE(LEVEL1, "CritialError[%s]: %s. Cimserver exit.", info.code.c_str(), info.message.c_str());
        RecordSmisLayerStatus(2, "abnormal (run at flash area)");
        MemoryCautioner::CriticalExit();
    }
    m_clientType = GetOperationMode();

    // Made here, on one thread, before any worker touches them.
    Singleton<JobManager>::Instance();
    Singleton<CimHandle>::Instance()->Initialize(cimom);
    RegisterEvents();
    m_bEnableCopyService = ConfigManager::GetConfigBoolValue("smis", "enableCopyService", true);
    Singleton<IndicationHandle>::Instance()->SetEnabled(false);
    m_bEnableIndication = ConfigManager::GetConfigBoolValue("Test", "EnableIndication", true);
    if (ConfigManager::GetConfigBoolValue("Test", "CleanRepository", false)) RepositoryCleaner::Clean(true);
    if (ConfigManager::GetConfigBoolValue("Test", "EnableRPCreation", true)) {
        const OperationContext profileContext;
        DataEventArgs profileArgs(profileContext, nullptr, nullptr, std::string());
        RegisteredProfile profiles;
        profiles.Create(&profileArgs);
    }

    if (!ConfigManager::GetConfigBoolValue("Test", "EnablePolling", true)) {
        SMIS_TRACE(LEVEL2, "Polling model closed");
    } else {
        DataflowFileSource::SetFailover(&failoverOfTheProvider);
        SetViewThreadSource(GetDataFlowSource(), &failoverOfTheProvider);
        if (create_worker_thread() == -1) {
            SMIS_TRACE(LEVEL1, "Error[ %s ] : %s ,%s", "-1", "initialize", "Create threads failed");
            std::cout << "Error[ -1 ] Create threads failed" << std::endl;
            throw CIMException(CIM_ERR_FAILED, "Create threads failed");
        }
    }
    SMIS_TRACE(LEVEL2, "SMIS Provider initializing end");
}

void SMISProvider::terminate() {
    terminate_worker_thread();
    // Ending the module ends the server's process. The worker threads still
    // run, so no static destructor may run under them: only the buffers are
    // flushed before the process goes.
    Tracer::flushTrace();
    std::fflush(nullptr);
    ::_exit(0);
}

bool SMISProvider::validateNamespace(const CIMObjectPath& path) {
    return ::strcasecmp(path.getNameSpace().getString().toUtf8().c_str(),
                        Singleton<ConfigManager>::Instance()->GetNamespace().c_str()) == 0;
}

void SMISProvider::invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler) {
    if (!validateNamespace(objectReference)) return;
    Array<CIMParamValue> outParameters;
    InvokeMethodArgs args(context, objectReference, methodName, inParameters, outParameters, handler);
    m_controllerManager.InvokeMethod(args);
}

void SMISProvider::associators(const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role, const String& resultRole,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    ObjectResponseHandler& handler) {
    if (!validateNamespace(objectName)) return;
    AssoArgs args(context, objectName, associationClass, resultClass, role, resultRole, includeQualifiers,
        includeClassOrigin, propertyList, handler);
    m_controllerManager.Associator(args);
}

void SMISProvider::associatorNames(const OperationContext& context, const CIMObjectPath& objectName,
    const CIMName& associationClass, const CIMName& resultClass, const String& role, const String& resultRole,
    ObjectPathResponseHandler& handler) {
    if (!validateNamespace(objectName)) return;
    AssoNameArgs args(context, objectName, associationClass, resultClass, role, resultRole, handler);
    m_controllerManager.AssociatorNames(args);
}

// Instances are served by the server's repository, which each load keeps in
// step with the array; these operations answer nothing.
void SMISProvider::getInstance(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
    const CIMPropertyList&, InstanceResponseHandler&) {}
void SMISProvider::enumerateInstances(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
    const CIMPropertyList&, InstanceResponseHandler&) {}
void SMISProvider::enumerateInstanceNames(const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler&) {}
void SMISProvider::modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
    const CIMPropertyList&, ResponseHandler&) {}
void SMISProvider::createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
    ObjectPathResponseHandler&) {}
void SMISProvider::deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) {
    throw CIMException(CIM_ERR_NOT_SUPPORTED, "Not Support");
}
void SMISProvider::references(const OperationContext&, const CIMObjectPath&, const CIMName&, const String&,
    const Boolean, const Boolean, const CIMPropertyList&, ObjectResponseHandler&) {}
void SMISProvider::referenceNames(const OperationContext&, const CIMObjectPath&, const CIMName&, const String&,
    ObjectPathResponseHandler&) {}

void SMISProvider::enableIndications(IndicationResponseHandler& handler) {
    Singleton<IndicationHandle>::Instance()->SetHandler(&handler);
}

void SMISProvider::disableIndications() { Singleton<IndicationHandle>::Instance()->ReleaseHandle(); }

// Subscriptions are filtered by the server; the module sends what it has.
void SMISProvider::createSubscription(const OperationContext&, const CIMObjectPath&, const Array<CIMObjectPath>&,
    const CIMPropertyList&, const Uint16) {}
void SMISProvider::modifySubscription(const OperationContext&, const CIMObjectPath&, const Array<CIMObjectPath>&,
    const CIMPropertyList&, const Uint16) {}
void SMISProvider::deleteSubscription(const OperationContext&, const CIMObjectPath&, const Array<CIMObjectPath>&) {}

bool SMISProvider::BeforeReceiveAllData(EventArgs*) {
    SMIS_TRACE(LEVEL3, "Info [ OnBeforeLoadAllData ] : indication is %s",
        Singleton<IndicationHandle>::Instance()->IsEnabled() ? "enabled" : "disabled");
    Singleton<CimHandle>::Instance()->beginTransaction(moduleNamespace());
    return true;
}

bool SMISProvider::AfterReceiveAllData(EventArgs*) {
    // Jobs are proved against the data just written, inside its transaction.
    Singleton<JobManager>::Instance()->EndJobs();
    Singleton<CimHandle>::Instance()->commitTransaction();
    // The first load's creations are the starting state, not events.
    if (m_bEnableIndication) Singleton<IndicationHandle>::Instance()->SetEnabled(true);
    RecordSmisLayerStatus(1, "ready");
    return true;
}

bool SMISProvider::BeforeReceiveDataPerType(EventArgs* args) {
    return dynamic_cast<HandleDataArgs*>(args) != nullptr || args == nullptr;
}

bool SMISProvider::AfterReceiveDataPerType(EventArgs* args) {
    HandleDataArgs* data = dynamic_cast<HandleDataArgs*>(args);
    if (data == nullptr) return true;
    if (data->dataType == RAWDATA_PD) {
        PrimordialPool primordialPool;
        primordialPool.UpdateInstance(args);
    }
    const int count = data->records != nullptr ? static_cast<int>(data->records->size()) : 0;
    SMIS_TRACE(LEVEL3, "%s %d %s instances", DataFlow::ClassifiedTypeToString(data->classifiedType).c_str(), count,
        RawData::TypeToString(data->dataType).c_str());
    return true;
}

void SMISProvider::Clean() {
    PDmanager::Instance()->Destroy();
    Singleton<JobManager>::Instance()->Clean();
    m_smisDataCenter->Destroy();
    m_rawDataCenter->Destroy();
}

void SMISProvider::Failover() {
    try {
        Singleton<CimHandle>::Instance()->rollBackTransaction();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "roll back failed.");
    }
    Clean();
    IndicationSender().SendCriticalAlertIndication(String());
    Singleton<IndicationHandle>::Instance()->SetEnabled(false);
}

void SMISProvider::RegisterEvents() {
    // In the order of subscription; the masking model subscribes here with
    // its classes.
    ComputerSystem::AfterCreated += &RegisteredProfile::ConnectToArray;
    // The interop tie to an array goes with it.
    ComputerSystem::BeforeDeleted += &RegisteredProfile::OnArrayDeleted;
    ComputerSystem::AfterCreated += &SoftwareIdentityArray::OnCreate;
    ComputerSystem::BeforeDeleted += &SoftwareIdentityArray::OnDelete;
    ComputerSystem::AfterCreated += &Chassis::OnCreate;
    ComputerSystem::AfterModified += &Chassis::OnModify;
    // The array's firmware identity follows a firmware change.
    ComputerSystem::AfterModified += &SoftwareIdentityArray::OnModify;
    ComputerSystem::BeforeDeleted += &Chassis::OnDelete;
    DiskDrive::AfterCreated += &PhysicalPackage::OnCreate;
    DiskDrive::AfterModified += &PhysicalPackage::OnModify;
    DiskDrive::BeforeDeleted += &PhysicalPackage::OnDelete;
    StoragePool::AfterCreated += &CompositeExtent::OnCreate;
    StoragePool::AfterModified += &CompositeExtent::OnModify;
    StoragePool::BeforeDeleted += &CompositeExtent::OnDelete;
    ComputerSystem::AfterCreated += &StorageClientSettingData::OnCreate;
    Chassis::AfterCreated += &Location::OnCreate;
    Chassis::BeforeDeleted += &Location::OnDelete;
    Chassis::AfterModified += &Location::OnModify;
}

int SMISProvider::GetOperationMode() {
    const std::string path = FixedPath::Resolve(SMIS_CLIENT_TYPE_FILE);
    FILE* file = std::fopen(path.c_str(), "r+");
    if (file == nullptr) return 0;
    char line[257];
    int mode = 0;
    if (std::fgets(line, sizeof line, file) != nullptr) {
        std::size_t length = std::strlen(line);
        if (length > 0 && line[length - 1] == '\n') line[length - 1] = '\0';
        mode = ::strcasecmp(line, SMIS_CLIENT_TYPE_TYPE1) == 0 ? 1 : 0;
    } else {
        std::fputs(SMIS_CLIENT_TYPE_DEFAULT, file);
    }
    std::fclose(file);
    return mode;
}

}  // namespace orvsmis
