#ifndef ORVSMIS_XMLPARSER_H
#define ORVSMIS_XMLPARSER_H

#include <string>
#include <vector>

#include "RawData.h"

namespace orvsmis {

class StructFiller;

// Takes a tool's result, in chunks as the tool writes it or as a whole file,
// and answers record queries on it.
class XMLParser {
public:
    XMLParser();
    virtual ~XMLParser();

    // flag 1 marks the last chunk. The last chunk always gives true: whether
    // the document is good is read afterwards from GetReturnCode.
    virtual bool LoadChunk(const char* data, int size, int flag);
    // Unloads, then reads the file; true when its RETURN_CODE is 0.
    bool LoadXMLFile(const char* path);
    void Unload();
    // True only for a parsed document whose RETURN_CODE is 0.
    bool GetReturnCode() const;
    // Appends the records of one type; the filler's count, or -1 when nothing
    // is loaded or the type has no filler.
    int QueryData(std::vector<RawData*>& out, int type) const;

    bool IsLoaded() const { return m_bLoaded; }
    const std::string& GetFilePath() const { return m_filePath; }
    StructFiller* GetFiller() const { return m_filler; }

protected:
    bool m_bLoaded;
    std::string m_filePath;
    StructFiller* m_filler;
    bool m_bSave;
    std::string m_buffer;

private:
    XMLParser(const XMLParser&) = delete;
    XMLParser& operator=(const XMLParser&) = delete;
};

}  // namespace orvsmis

#endif
