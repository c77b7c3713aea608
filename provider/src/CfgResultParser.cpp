#include "CfgResultParser.h"

#include <libxml/xpath.h>

#include "LibXML2Filler.h"
#include "ResultInfo.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

const char* const UNKNOWN = "Unknown";

std::string textOf(const xmlNode* node) { return LibXML2Filler::contentOf(node); }

bool isElement(const xmlNode* node, const char* name) {
    return node != nullptr && node->type == XML_ELEMENT_NODE && node->name != nullptr &&
           xmlStrcmp(node->name, reinterpret_cast<const xmlChar*>(name)) == 0;
}

}  // namespace

CfgResultParser::CfgResultParser() { reset(); }

void CfgResultParser::reset() {
    m_success = false;
    m_messageId = UNKNOWN;
    m_messageContent = UNKNOWN;
    m_returnTime = UNKNOWN;
}

bool CfgResultParser::Parse() {
    reset();
    const LibXML2Filler* filler = dynamic_cast<const LibXML2Filler*>(m_filler);
    xmlXPathContext* context = filler == nullptr ? nullptr : filler->GetXPathContext();
    if (!m_bLoaded || context == nullptr) {
        SMIS_TRACE(LEVEL1, "Error[ INVALID_PARAMETER ] : pContext = NULL");
        return false;
    }
    xmlXPathObject* result =
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>("/REQUEST/CMD_REQUEST"), context);
    if (result == nullptr || result->nodesetval == nullptr || result->nodesetval->nodeNr == 0) {
        if (result != nullptr) xmlXPathFreeObject(result);
        SMIS_TRACE(LEVEL1, "Error[ INVALID_PARAMETER ] : xpathObj = NULL");
        return false;
    }
    for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
        const xmlNode* request = result->nodesetval->nodeTab[i];
        for (const xmlNode* child = request->children; child != nullptr; child = child->next) {
            if (isElement(child, "RETURN_MSG")) {
                for (const xmlNode* item = child->children; item != nullptr; item = item->next) {
                    if (item->type != XML_ELEMENT_NODE) continue;
                    const std::string name = LibXML2Filler::nameOf(item);
                    if (name == "message_id") {
                        std::string id = textOf(item);
                        // The array writes its ids "Vex" and a number; the
                        // number alone is what a client is shown.
                        if (id.compare(0, 3, "Vex") == 0) id.erase(0, 3);
                        m_messageId = id;
                    } else if (name == "message_content") {
                        m_messageContent = textOf(item);
                    } else if (name == "return_time") {
                        m_returnTime = textOf(item);
                    }
                }
            } else if (isElement(child, "RETURN_CODE")) {
                m_success = textOf(child) == "0";
            }
        }
    }
    xmlXPathFreeObject(result);
    if (!m_success)
        SMIS_TRACE(LEVEL3, "Error : command failed. message_id=Vex%s, message_content=%s, return_time=%s",
                   m_messageId.c_str(), m_messageContent.c_str(), m_returnTime.c_str());
    return true;
}

void CfgResultParser::GetInfo(ResultInfo& out) const { out.Set(m_success, m_messageId, m_messageContent); }

}  // namespace orvsmis
