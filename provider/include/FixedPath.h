#ifndef ORVSMIS_FIXEDPATH_H
#define ORVSMIS_FIXEDPATH_H

#include <string>

namespace orvsmis {

// The module's fixed paths ("/opt/pegasus/etc/...", "/var/run/...") are taken
// under the folder named by SMIS_ROOT when it is set, so that a whole system
// can run in a private root; without it they stand as written.
class FixedPath {
public:
    static std::string Resolve(const std::string& path);
};

}  // namespace orvsmis

#endif
