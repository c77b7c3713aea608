#ifndef ORVSMIS_DATAFLOWSOURCE_H
#define ORVSMIS_DATAFLOWSOURCE_H

#include <list>
#include <string>
#include <vector>

#include "RawData.h"
#include "XMLParser.h"

namespace orvsmis {

class DataFlow;
class QueryCommand;

// Where a load begins: gets the array's state as a parsed document and
// drives the data flow over it.
class DataflowSource {
public:
    virtual ~DataflowSource() {}
    // True when the state was read and dispatched.
    virtual bool LoadData() = 0;
    // Appends the records of one type of the loaded document and tells the
    // id of the array they belong to.
    virtual void GetData(int type, std::string& arrayId, std::vector<RawData*>& records) = 0;
    virtual bool HasValidData() = 0;
};

// Replays saved result documents (section "PollingSimulator" of the
// configuration), for operation without an array.
class DataflowFileSource : public DataflowSource {
public:
    // Called after a failed file load: rolls back and empties what the load
    // left behind. Set by the provider at start.
    typedef void (*FailoverFunction)();

    explicit DataflowFileSource(DataFlow* dataFlow) : m_dataFlow(dataFlow) {}

    bool LoadData() override;
    void GetData(int type, std::string& arrayId, std::vector<RawData*>& records) override;
    bool HasValidData() override;

    bool LoadDataFromFile(const std::string& path, const std::vector<int>& types, bool dispatchToSmis);

    static void SetFailover(FailoverFunction failover);
    // Forgets the configured file list and position, so that the next load
    // reads the configuration again.
    static void ResetFileList();

    static std::string m_arrayId;

private:
    XMLParser m_parser;
    DataFlow* m_dataFlow;
};

// Reads the array through its query commands: the whole view first, then
// the queries that follow it. All commands' results are classified before any
// is dispatched, so a failing command changes nothing.
class DataflowStorageSource : public DataflowSource {
public:
    // With the array's view command first, then the queries that follow it.
    explicit DataflowStorageSource(DataFlow* dataFlow);
    // Without commands when withCommands is false; AddCommand gives them.
    DataflowStorageSource(DataFlow* dataFlow, bool withCommands);
    ~DataflowStorageSource() override;

    bool LoadData() override;
    void GetData(int type, std::string& arrayId, std::vector<RawData*>& records) override;
    bool HasValidData() override;

    // The parser every command of this source must write into.
    XMLParser& GetParser() { return m_parser; }
    // Appends a command made on GetParser(); the source owns it.
    void AddCommand(QueryCommand* command);

private:
    DataflowStorageSource(const DataflowStorageSource&) = delete;
    DataflowStorageSource& operator=(const DataflowStorageSource&) = delete;

    void UpdateAssociatedCommands(int type, const std::vector<RawData*>& records);

    XMLParser m_parser;
    DataFlow* m_dataFlow;
    std::list<QueryCommand*> m_commands;
    std::string m_lastArrayId;
};

class DataflowSourceFactory {
public:
    // 0 replays files, 1 asks the array; null for any other kind.
    static DataflowSource* CreateSource(int kind, DataFlow* dataFlow);
};

}  // namespace orvsmis

#endif
