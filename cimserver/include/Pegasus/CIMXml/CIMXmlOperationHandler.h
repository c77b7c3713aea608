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
class OperationDispatcher;

// Answers one CIM-XML operation request (a POST or M-POST the HTTP layer has
// authenticated): checks the CIM headers and the envelope, decodes the
// intrinsic or extrinsic call, runs it (class operations from the schema,
// everything else through the server) and encodes the answer. CIM errors
// are HTTP 200 with an ERROR element; faults in the headers or the envelope
// are HTTP errors with a CIMError header. Never throws.
//
// With a dispatcher, enumerations and association queries are written as
// their results come (client access, like the network's CIMOMHandle), so
// that an answer costs about its own text; without one they go through
// `server` like every other operation. Either way the whole answer text is
// built before it is returned, so an error found on the way is answered as
// an ERROR and never as part of an answer.
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
        // The answer's text is bodyParts in order, then body. Answers larger
        // than about pieceBytes come in pieces of about that size (so that
        // the text is never copied or regrown as a whole); smaller ones are
        // all in body.
        std::vector<std::string> bodyParts;
        std::string body;

        // The whole text (copied together: for small answers and tests).
        std::string text() const;
        size_t textSize() const;
    };

    static constexpr size_t pieceBytes = 1024u * 1024u;

    CIMXmlOperationHandler(const SchemaManager& schema, CIMOMHandleRep& server,
        const std::string& hostName, OperationDispatcher* dispatcher = nullptr);

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
    void _intrinsic(Call& call, Response& response) const;
    std::string _extrinsic(Call& call) const;

    const SchemaManager& _schema;
    CIMOMHandleRep& _server;
    std::string _hostName;
    OperationDispatcher* _dispatcher;
};

} // namespace Pegasus

#endif
