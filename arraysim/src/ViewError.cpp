#include "ViewError.h"

#include <cstdio>

namespace arraysim {

std::string ViewError::MessageId() const {
    char text[16];
    std::snprintf(text, sizeof text, "Vex2%04d", m_returnCode % 10000);
    return text;
}

}  // namespace arraysim
