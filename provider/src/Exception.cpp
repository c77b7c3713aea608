#include "Exception.h"

namespace orvsmis {

Exception::Exception(const std::string& message) : m_message(message) {}

Exception::~Exception() {}

}  // namespace orvsmis
