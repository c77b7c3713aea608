#include "FixedPath.h"

#include <cstdlib>

namespace orvsmis {

std::string FixedPath::Resolve(const std::string& path) {
    const char* root = std::getenv("SMIS_ROOT");
    if (root == nullptr || *root == '\0' || path.empty() || path[0] != '/') return path;
    std::string base(root);
    while (base.size() > 1 && base[base.size() - 1] == '/') base.erase(base.size() - 1);
    return base + path;
}

}  // namespace orvsmis
