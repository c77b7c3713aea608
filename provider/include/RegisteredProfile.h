#ifndef ORVSMIS_REGISTEREDPROFILE_H
#define ORVSMIS_REGISTEREDPROFILE_H

#include <map>
#include <mutex>
#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "EventArgs.h"
#include "Model.h"

namespace orvsmis {

// One row of the profile table.
struct ProfileInfo {
    enum Kind { PROFILE = 1, SUBPROFILE = 2, STANDARD = 3 };
    const char* name;
    const char* version;
    int kind;
    int organization;  // 11 (SNIA) in every row
};

// One row of the pair table: the profile and the sub-profile it requires.
struct ProfilePair {
    const char* antecedent;
    const char* dependent;
};

// The registered profiles in the interop namespace: which parts of the
// standard the module implements and where a client finds the array. They
// are written once at start; the "Array" profile is tied to the array's
// system when the first load creates it.
class RegisteredProfile : public Model {
public:
    static const ProfileInfo PROFILES[];
    static const int PROFILE_COUNT;
    static const ProfilePair PAIRS[];
    static const int PAIR_COUNT;

    // Profile name -> path in the interop namespace.
    typedef std::map<std::string, Pegasus::CIMObjectPath> ProfileMap;

    // Writes every profile of the table (but "Copy Services" while the copy
    // service is off), the pairs between them, their ties to the server's
    // object manager and the provider's software identity, in one
    // transaction on the interop namespace. What an earlier start wrote
    // there is removed first. Only args->context is read. Returns the path
    // of the "Array" profile. CIMException on failure, after a roll back.
    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;

    // ElementConformsToProfile from the "Array" profile to args.path (the
    // array's system in the provider's namespace). Nothing when the
    // profiles were not written at start.
    void CreateArrayAssociation(const ParentArgs& args);

    // Handler of ComputerSystem::AfterCreated.
    static void ConnectToArray(ParentArgs& args);
    // Handler of ComputerSystem::BeforeDeleted: the array is gone, so is
    // the tie to it.
    static void OnArrayDeleted(ParentArgs& args);
    // Deletes the association that ConnectToArray wrote, if any. A failure
    // is traced, never thrown.
    static void DisconnectToArray();

    // The rows that are written with the copy service on or off.
    static bool IsRegistered(const ProfileInfo& profile, bool copyServiceEnabled);
    // "SNIA.<name>.<version>".
    static Pegasus::String InstanceID(const char* name, const char* version);
    // prefix + "RegisteredSubProfile" for kind 2, prefix + "RegisteredProfile"
    // otherwise.
    static Pegasus::CIMName ProfileClassName(const ProfileInfo& profile);
    static Pegasus::CIMInstance WrapInstance(const ProfileInfo& profile);
    // The key path, in the interop namespace.
    static Pegasus::CIMObjectPath WrapReference(const ProfileInfo& profile);

    // The paths that the statics hold (empty when not written).
    static Pegasus::CIMObjectPath GetArrayProfilePath();
    static Pegasus::CIMObjectPath GetArrayAssociationPath();

private:
    // Finds the server's object manager in the interop namespace; when the
    // server describes none, writes the module's own server view and uses
    // its object manager. Throws CIMException when neither can be had.
    static Pegasus::CIMObjectPath objectManagerPath(const Pegasus::OperationContext& context);
    static void removeEarlierContent(const Pegasus::OperationContext& context);

    static std::mutex m_lock;  // guards the two paths below
    static Pegasus::CIMObjectPath m_opRegArray;
    static Pegasus::CIMObjectPath m_opAssocToCS;
};

}  // namespace orvsmis

#endif
