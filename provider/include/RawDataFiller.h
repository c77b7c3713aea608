#ifndef ORVSMIS_RAWDATAFILLER_H
#define ORVSMIS_RAWDATAFILLER_H

#include <string>
#include <vector>

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include "RawData.h"

namespace orvsmis {

class LibXML2Filler;

// Reads the records of one type out of a loaded document and appends them to
// a vector; each record carries one reference that passes to the vector.
class RawDataFiller {
public:
    virtual ~RawDataFiller() {}
    // The number of records appended (see each filler for -1).
    virtual int ToStruct(std::vector<RawData*>& out) = 0;
    virtual std::string GetArrayId() const;

    // The objects that path selects, in document order; empty when none.
    static std::vector<xmlNode*> SelectNodes(xmlXPathContext* context, const char* path);
    // The element children of node (text nodes skipped).
    static std::vector<xmlNode*> ElementChildren(xmlNode* node);
};

// The filler of a record type, null for types that have none.
class RawDataFillerFactory {
public:
    static RawDataFiller* Create(const LibXML2Filler* filler, int type);
};

}  // namespace orvsmis

#endif
