#ifndef ORVSMIS_CLASSIFIEDDATASET_H
#define ORVSMIS_CLASSIFIEDDATASET_H

#include <vector>
#include <map>
#include <string>

#include "RawData.h"

namespace orvsmis {

// Keys of the three classification tables.
class DataClassificationType {
public:
    static const std::string Add;
    static const std::string Delete;
    static const std::string Modify;
};

// The result of one classification: per classification key, per record type
// (ascending), the records in order. The three tables always hold the same
// types. The set holds a reference on every record in it.
class ClassifiedDataSet {
public:
    typedef std::vector<RawData*> RecordList;
    typedef std::map<int, RecordList*> TypeTable;

    ClassifiedDataSet();
    ~ClassifiedDataSet();

    void AddItem(const std::string& classification, RawData* record);
    // Null for an unknown key.
    TypeTable* GetClassifiedDataTable(const std::string& classification);
    void Clear();

private:
    ClassifiedDataSet(const ClassifiedDataSet&) = delete;
    ClassifiedDataSet& operator=(const ClassifiedDataSet&) = delete;

    std::map<std::string, TypeTable> m_tables;
};

}  // namespace orvsmis

#endif
