// The stored layout: names kept across rollbacks and reopening, rows of one
// hash told apart, databases of the first layout converted or refused, and
// damaged rows reported.

#include "FirstFormatBlobs.h"
#include "RepositoryTestSupport.h"

#include <Pegasus/Repository/ObjectPathNormalizer.h>

#include <sqlite3.h>

#include <fstream>

namespace {

using namespace Pegasus;
using namespace repotest;

// Direct access to a namespace database, as another program would have it.
class Sql {
public:
    explicit Sql(const std::string& file)
    {
        if (sqlite3_open(file.c_str(), &_db) != SQLITE_OK)
            throw std::runtime_error("cannot open " + file);
        sqlite3_busy_timeout(_db, 5000);
    }
    ~Sql() { sqlite3_close(_db); }
    void exec(const std::string& sql)
    {
        char* message = nullptr;
        if (sqlite3_exec(_db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
            std::string text = message ? message : "?";
            sqlite3_free(message);
            throw std::runtime_error(sql + ": " + text);
        }
    }
    long long number(const std::string& sql)
    {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(_db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK)
            throw std::runtime_error(sql + ": " + sqlite3_errmsg(_db));
        long long value = sqlite3_step(stmt) == SQLITE_ROW ? sqlite3_column_int64(stmt, 0) : -1;
        sqlite3_finalize(stmt);
        return value;
    }
    void insert(const std::string& sql, const std::vector<std::string>& texts,
        const std::string& blob)
    {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(_db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK)
            throw std::runtime_error(sql + ": " + sqlite3_errmsg(_db));
        int i = 1;
        for (const std::string& t : texts)
            sqlite3_bind_text(stmt, i++, t.c_str(), int(t.size()), SQLITE_TRANSIENT);
        if (!blob.empty())
            sqlite3_bind_blob(stmt, i, blob.data(), int(blob.size()), SQLITE_TRANSIENT);
        int rc = sqlite3_step(stmt);
        sqlite3_finalize(stmt);
        if (rc != SQLITE_DONE)
            throw std::runtime_error(sql + ": " + sqlite3_errmsg(_db));
    }

private:
    sqlite3* _db = nullptr;
};

CIMObjectPath poolPath(const std::string& id, Uint32 number)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), String(id.c_str()), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Number"), String(std::to_string(number).c_str()),
        CIMKeyBinding::NUMERIC));
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName("T_Pool"), keys);
}

std::string deviceIdOf(const CIMInstance& instance)
{
    String id;
    instance.getProperty(instance.findProperty(CIMName("DeviceID"))).getValue().get(id);
    return id.toUtf8();
}

using RepositoryLayout = RepositoryFixture;

TEST_F(RepositoryLayout, NamesSurviveRollbacksAndReopening)
{
    // A load that introduces a class and its properties, then rolls back;
    // a failed call inside a transaction rolls back to its savepoint.
    repo->beginTransaction(ORV);
    repo->createInstance(ORV, pool("rolled-back", 1));
    CIMInstance withName = volume("V0");
    withName.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("first"))));
    repo->createInstance(ORV, withName);
    repo->rollBackTransaction();
    repo->beginTransaction(ORV);
    CIMInstance disk = volume("D0", "T_Disk");
    disk.addProperty(CIMProperty(CIMName("Rpm"), CIMValue(Uint32(7200))));
    repo->createInstance(ORV, disk);
    CIMInstance bad = volume("D0", "T_Disk");
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS, codeOf([&] { repo->createInstance(ORV, bad); }));
    repo->commitTransaction();

    // The same names, used again by later commits, must be in the file.
    repo->createInstance(ORV, pool("P1", 7));
    repo->createInstance(ORV, withName);
    repo->createInstance(ORV, association("T_AllocatedFrom", poolPath("P1", 7), volumePath("V0")));
    open();

    CIMInstance back = repo->getInstance(ORV, volumePath("V0"), false, true, CIMPropertyList(),
        RepositoryAccess::Committed);
    String name;
    back.getProperty(back.findProperty(CIMName("Name"))).getValue().get(name);
    EXPECT_EQ("first", name.toUtf8());
    EXPECT_EQ("T_Logical",
        back.getProperty(back.findProperty(CIMName("Size"))).getClassOrigin().getString().toUtf8());
    EXPECT_EQ(1u, repo->enumerateInstances(ORV, CIMName("T_Disk"), true, false, false,
        CIMPropertyList(), RepositoryAccess::Committed).size());
    Array<CIMObject> far = repo->associators(ORV, poolPath("P1", 7), CIMName(), CIMName(),
        String(), String(), false, false, CIMPropertyList(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, far.size());
    EXPECT_EQ("V0", deviceIdOf(CIMInstance(far[0])));
    EXPECT_EQ(1u, repo->enumerateInstanceNames(ORV, CIMName("T_Pool"), RepositoryAccess::Committed)
        .size());
}

TEST_F(RepositoryLayout, RowsOfOneHashAreToldApart)
{
    repo->createInstance(ORV, pool("P1", 1));
    repo->createInstance(ORV, pool("P2", 2));
    repo->createInstance(ORV, volume("A"));
    repo->createInstance(ORV, volume("B"));
    repo->createInstance(ORV, association("T_AllocatedFrom", poolPath("P1", 1), volumePath("A")));
    repo->createInstance(ORV, association("T_AllocatedFrom", poolPath("P2", 2), volumePath("B")));
    std::string file = repo->databaseFile(ORV);
    repo.reset();
    {
        // Volume B filed under A's hash, and B's association also filed
        // under pool P1 as if its target text had the same hash.
        Sql sql(file);
        long long hashA = ObjectPathNormalizer::hash(
            ObjectPathNormalizer(schema).canonical(volumePath("A"), "root/orv"));
        long long hashB = ObjectPathNormalizer::hash(
            ObjectPathNormalizer(schema).canonical(volumePath("B"), "root/orv"));
        long long hashP1 = ObjectPathNormalizer::hash(
            ObjectPathNormalizer(schema).canonical(poolPath("P1", 1), "root/orv"));
        long long hashP2 = ObjectPathNormalizer::hash(
            ObjectPathNormalizer(schema).canonical(poolPath("P2", 2), "root/orv"));
        ASSERT_EQ(1, sql.number("SELECT count(*) FROM instances WHERE key = " + std::to_string(hashB)));
        sql.exec("UPDATE instances SET key = " + std::to_string(hashA) + " WHERE key = " +
            std::to_string(hashB));
        sql.exec("INSERT INTO refs(target, assoc, role, assoc_class) SELECT " +
            std::to_string(hashP1) + ", assoc, role, assoc_class FROM refs WHERE target = " +
            std::to_string(hashP2));
    }
    open();
    auto get = [&](const std::string& id) {
        return deviceIdOf(repo->getInstance(ORV, volumePath(id), false, false, CIMPropertyList(),
            RepositoryAccess::Committed));
    };
    EXPECT_EQ("A", get("A"));
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS, codeOf([&] { repo->createInstance(ORV, volume("A")); }));
    Array<CIMObjectPath> refs = repo->referenceNames(ORV, poolPath("P1", 1), CIMName(), String(),
        RepositoryAccess::Committed);
    ASSERT_EQ(1u, refs.size());
    EXPECT_NE(std::string::npos, refs[0].toString().toUtf8().find("\\\"A\\\""))
        << refs[0].toString().toUtf8();
    Array<CIMObject> far = repo->associators(ORV, poolPath("P1", 1), CIMName(), CIMName(),
        String(), String(), false, false, CIMPropertyList(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, far.size());
    EXPECT_EQ("A", deviceIdOf(CIMInstance(far[0])));

    // Deleting A takes A, not the other row of its hash.
    repo->deleteInstance(ORV, volumePath("A"));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] { get("A"); }));
    EXPECT_EQ(1u, repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), RepositoryAccess::Committed)
        .size());
}

// A database as the first layout wrote it: pool P1/7, volume OLD1 and the
// association between them.
void writeFirstLayout(const std::string& file, const SchemaManager& schema, const std::string& volumeBlob)
{
    ObjectPathNormalizer normalizer(schema);
    CIMObjectPath volume = CIMObjectPath("T_Volume.SystemName=\"SYS1\",DeviceID=\"OLD1\"");
    CIMObjectPath pool = CIMObjectPath("T_Pool.InstanceID=\"P1\",Number=7");
    CIMObjectPath alloc = CIMObjectPath(
        "T_AllocatedFrom.Antecedent=\"T_Pool.InstanceID=\\\"P1\\\",Number=7\","
        "Dependent=\"T_Volume.DeviceID=\\\"OLD1\\\",SystemName=\\\"SYS1\\\"\"");
    Sql sql(file);
    sql.exec("PRAGMA journal_mode=WAL;"
             "CREATE TABLE instances(id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE,"
             " class TEXT NOT NULL, data BLOB NOT NULL);"
             "CREATE INDEX instances_by_class ON instances(class, id);"
             "CREATE TABLE refs(assoc INTEGER NOT NULL, assoc_class TEXT NOT NULL,"
             " role TEXT NOT NULL, target TEXT NOT NULL, target_class TEXT NOT NULL);"
             "CREATE INDEX refs_by_target ON refs(target);"
             "CREATE INDEX refs_by_assoc ON refs(assoc);"
             "PRAGMA user_version=1;");
    auto row = [&](int id, const CIMObjectPath& path, const std::string& cls, const std::string& blob) {
        sql.insert("INSERT INTO instances(id, path, class, data) VALUES(" + std::to_string(id) +
            ", ?1, ?2, ?3)", {normalizer.canonical(path, "root/orv"), cls}, blob);
    };
    row(1, pool, "T_Pool", firstformat::pool());
    row(2, volume, "T_Volume", volumeBlob);
    row(3, alloc, "T_AllocatedFrom", firstformat::alloc());
    sql.insert("INSERT INTO refs VALUES(3, 'T_AllocatedFrom', 'antecedent', ?1, 'T_Pool')",
        {normalizer.canonical(pool, "root/orv")}, "");
    sql.insert("INSERT INTO refs VALUES(3, 'T_AllocatedFrom', 'dependent', ?1, 'T_Volume')",
        {normalizer.canonical(volume, "root/orv")}, "");
}

TEST_F(RepositoryLayout, FirstLayoutIsConvertedOnOpenWithNothingLost)
{
    std::string file = repo->databaseFile(ORV);
    repo.reset();
    std::filesystem::remove(file);
    std::filesystem::remove(file + "-wal");
    std::filesystem::remove(file + "-shm");
    writeFirstLayout(file, schema, firstformat::volume());
    open();

    CIMInstance v = repo->getInstance(ORV, volumePath("OLD1"), false, true, CIMPropertyList(),
        RepositoryAccess::Committed);
    String name;
    v.getProperty(v.findProperty(CIMName("Name"))).getValue().get(name);
    EXPECT_EQ("caf\xc3\xa9", name.toUtf8());
    Uint64 size = 0;
    v.getProperty(v.findProperty(CIMName("Size"))).getValue().get(size);
    EXPECT_EQ(4096u, size);
    Array<CIMObject> far = repo->associators(ORV, poolPath("P1", 7), CIMName(), CIMName(),
        String(), String(), false, false, CIMPropertyList(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, far.size());
    EXPECT_EQ("OLD1", deviceIdOf(CIMInstance(far[0])));
    EXPECT_EQ(1u, repo->references(ORV, volumePath("OLD1"), CIMName("T_Dependency"), String("dependent"),
        false, false, CIMPropertyList(), RepositoryAccess::Committed).size());
    // The converted file takes new instances and still finds the old ones by key.
    repo->createInstance(ORV, volume("NEW1"));
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS, codeOf([&] { repo->createInstance(ORV, pool("P1", 7)); }));
    repo->deleteInstance(ORV, CIMObjectPath(
        "T_AllocatedFrom.Antecedent=\"T_Pool.InstanceID=\\\"P1\\\",Number=7\","
        "Dependent=\"T_Volume.DeviceID=\\\"OLD1\\\",SystemName=\\\"SYS1\\\"\""));
    EXPECT_EQ(0u, repo->referenceNames(ORV, poolPath("P1", 7), CIMName(), String(),
        RepositoryAccess::Committed).size());
    repo.reset();
    Sql sql(file);
    EXPECT_EQ(2, sql.number("PRAGMA user_version"));
    EXPECT_EQ(0, sql.number("SELECT count(*) FROM sqlite_master WHERE name LIKE '%_first'"));
}

TEST_F(RepositoryLayout, DamagedFirstLayoutIsRefusedAndLeftAsItWas)
{
    std::string file = repo->databaseFile(ORV);
    repo.reset();
    std::filesystem::remove(file);
    std::filesystem::remove(file + "-wal");
    std::filesystem::remove(file + "-shm");
    std::string damaged = firstformat::volume();
    damaged.resize(damaged.size() / 2);
    writeFirstLayout(file, schema, damaged);
    std::string message;
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { open(); }, &message));
    EXPECT_NE(std::string::npos, message.find("root#orv.db")) << message;
    EXPECT_NE(std::string::npos, message.find("OLD1")) << message;
    EXPECT_NE(std::string::npos, message.find("Nothing was changed")) << message;
    Sql sql(file);
    EXPECT_EQ(1, sql.number("PRAGMA user_version"));
    EXPECT_EQ(3, sql.number("SELECT count(*) FROM instances"));
    EXPECT_EQ(2, sql.number("SELECT count(*) FROM refs"));
}

TEST_F(RepositoryLayout, DamagedRowsAreClearErrorsAndNewerLayoutsAreRefused)
{
    repo->createInstance(ORV, volume("A"));
    repo->createInstance(ORV, volume("B"));
    std::string file = repo->databaseFile(ORV);
    repo.reset();
    {
        Sql sql(file);
        sql.exec("UPDATE instances SET data = substr(data, 1, 6) WHERE id = 2");
    }
    open();
    std::string message;
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] {
        repo->enumerateInstances(ORV, CIMName("T_Volume"), true, false, false, CIMPropertyList(),
            RepositoryAccess::Committed);
    }, &message));
    EXPECT_NE(std::string::npos, message.find("damaged")) << message;
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] {
        repo->getInstance(ORV, volumePath("B"), false, false, CIMPropertyList(),
            RepositoryAccess::Committed);
    }));
    EXPECT_EQ("A", deviceIdOf(repo->getInstance(ORV, volumePath("A"), false, false,
        CIMPropertyList(), RepositoryAccess::Committed)));

    // A damaged entry of the name dictionary stops the open, naming the file.
    repo.reset();
    {
        Sql sql(file);
        sql.exec("UPDATE names SET entry = x'70ff' WHERE id = (SELECT max(id) FROM names)");
    }
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { open(); }, &message));
    EXPECT_NE(std::string::npos, message.find("root#orv.db")) << message;
    EXPECT_NE(std::string::npos, message.find("dictionary")) << message;

    {
        Sql sql(file);
        sql.exec("PRAGMA user_version=7");
    }
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { open(); }, &message));
    EXPECT_NE(std::string::npos, message.find("newer server")) << message;
}

} // namespace
