#ifndef ORVSMIS_RAWDATAFILLER_H
#define ORVSMIS_RAWDATAFILLER_H

#include <cstddef>
#include <string>
#include <utility>
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

    // Where one unit's text goes.
    typedef std::pair<const char*, std::string*> TextUnit;
    // Stores the text of each listed unit of the section; missing or empty
    // units leave their field alone.
    static void FillTextUnits(xmlNode* section, const TextUnit* fields, size_t count);
    template <size_t N>
    static void FillTextUnits(xmlNode* section, const TextUnit (&fields)[N]) {
        FillTextUnits(section, fields, N);
    }
    // The text of the first unit of that name in the section, "" when none.
    static std::string UnitText(xmlNode* section, const char* name);

protected:
    // One record of `type` per object that path selects: fill is given each
    // section of the object with the record and answers whether it knew the
    // section; an object with no known section makes no record. The number of
    // records appended, or -1 when the path selects nothing.
    template <class Record, class Fill>
    static int CollectRecords(xmlXPathContext* context, const char* path, int type, std::vector<RawData*>& out,
                              Fill fill) {
        std::vector<xmlNode*> objects = SelectNodes(context, path);
        if (objects.empty()) return -1;
        out.reserve(out.size() + objects.size());
        int count = 0;
        for (xmlNode* object : objects) {
            Record* record = static_cast<Record*>(RawDataFactory::CreateInstance(type));
            bool matched = false;
            for (xmlNode* section = object->children; section != nullptr; section = section->next) {
                if (section->type == XML_ELEMENT_NODE) matched = fill(section, record) || matched;
            }
            if (matched) {
                out.push_back(record);
                ++count;
            } else {
                record->Release();
            }
        }
        return count;
    }
};

// The filler of a record type, null for types that have none.
class RawDataFillerFactory {
public:
    static RawDataFiller* Create(const LibXML2Filler* filler, int type);
};

}  // namespace orvsmis

#endif
