#ifndef ORVSMIS_SMISDATACENTER_H
#define ORVSMIS_SMISDATACENTER_H

#include <string>
#include <vector>

#include "DataCenter.h"
#include "Singleton.h"

namespace orvsmis {

// Turns lists of record changes into model calls; keeps nothing itself.
// One per process: Singleton<SmisDataCenter>::Instance().
class SmisDataCenter : public DataCenter {
public:
    static SmisDataCenter* Instance() { return Singleton<SmisDataCenter>::Instance(); }

    void AddData(const std::vector<RawData*>* records, const std::string& arrayId) override;
    void DeleteData(const std::vector<RawData*>* records, const std::string& arrayId) override;
    void ModifyData(const std::vector<RawData*>* records, const std::string& arrayId) override;
    // Empties the repository of the module's instances (the interop
    // namespace's profiles stay).
    void Destroy() override;
};

}  // namespace orvsmis

#endif
