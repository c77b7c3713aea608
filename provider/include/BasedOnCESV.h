#ifndef ORVSMIS_BASEDONCESV_H
#define ORVSMIS_BASEDONCESV_H

#include <string>

#include "Controller.h"

namespace orvsmis {

// BasedOn between a pool's composite extent and the pool's volumes,
// computed at request time over the pool and never stored. Methods are
// refused by the base.
class BasedOnCESV : public Controller {
public:
    void Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass) override;
    void AssociatorNames(AssoNameArgs& args, const std::string& objectClass, const std::string& resultClass) override;
};

}  // namespace orvsmis

#endif
