#ifndef Pegasus_CIMXml_CIMXmlOperationHandler_h
#define Pegasus_CIMXml_CIMXmlOperationHandler_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include <string>
#include <utility>
#include <vector>

namespace Pegasus {

class SchemaManager;
class CIMXmlReader;

// Answers one CIM-XML operation request (a POST or M-POST the HTTP layer has
// authenticated): checks the CIM headers and the envelope, decodes the
// intrinsic or extrinsic call, runs it (class operations from the schema,
// everything else through the server) and encodes the answer. CIM errors
// are HTTP 200 with an ERROR element; faults in the headers or the envelope
// are HTTP errors with a CIMError header. Never throws.
//
// Safe to call from many threads at once as long as `server` is.
class CIMXmlOperationHandler
{
public:
    struct Request
    {
        std::string httpMethod;      // "POST" or "M-POST"
        // Request headers as received, with M-POST's "NN-" prefixes already
        // removed; names compare ignoring case. Only the CIM headers
        // (CIMOperation, CIMMethod, CIMObject, CIMProtocolVersion, CIMBatch)
        // are looked at.
        std::vector<std::pair<std::string, std::string>> headers;
        std::string contentType;     // empty when the request had none
        std::string body;
        std::string userName;        // the authenticated user; empty when authentication is off
    };

    struct Response
    {
        // 200 (also for CIM errors), or 400 / 405 / 501 / 500 for requests
        // refused before or outside the operation.
        int status = 200;
        // Extra headers: CIMOperation: MethodResponse with every 200; CIMError
        // (when one applies) and PGErrorDetail (URI-%-encoded) otherwise.
        std::vector<std::pair<std::string, std::string>> headers;
        // "application/xml; charset=utf-8" with a 200; empty, like the body,
        // otherwise.
        std::string contentType;
        std::string body;
    };

    CIMXmlOperationHandler(const SchemaManager& schema, CIMOMHandleRep& server,
        const std::string& hostName);

    Response handle(const Request& request) const;

    // The namespace the server serves under `name` ("interop" and
    // "root/PG_InterOp" are "root/interop"; case ignored), or empty when it
    // serves none by that name.
    std::string resolveNamespace(const std::string& name) const;

    // Looks up a header of the request, ignoring case; false when absent.
    static bool findHeader(const Request& request, const std::string& name, std::string& value);

private:
    struct Call;
    Response _handle(const Request& request) const;
    std::string _intrinsic(Call& call) const;
    std::string _extrinsic(Call& call) const;

    const SchemaManager& _schema;
    CIMOMHandleRep& _server;
    std::string _hostName;
};

} // namespace Pegasus

#endif
