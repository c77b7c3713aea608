#include <Pegasus/Repository/LayoutUpgrade.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Tracer.h>
#include <Pegasus/Repository/InstanceCodec.h>
#include <Pegasus/Repository/NameDictionary.h>
#include <Pegasus/Repository/ObjectPathNormalizer.h>
#include <Pegasus/Repository/RepositoryConnection.h>

namespace Pegasus {

void LayoutUpgrade::fromFirstLayout(RepositoryConnection& connection, NameDictionary& names)
{
    SqliteDatabase& db = connection.database();
    const std::string& file = db.file();
    std::string current = "its tables";
    PEG_TRACE((TRC_REPOSITORY, Tracer::LEVEL2,
        "converting repository database %s from the first layout", file.c_str()));
    size_t converted = 0;
    try {
        db.exec("BEGIN IMMEDIATE");
        try {
            db.exec(
                "ALTER TABLE instances RENAME TO instances_first;"
                "ALTER TABLE refs RENAME TO refs_first;"
                "DROP INDEX IF EXISTS instances_by_class;"
                "DROP INDEX IF EXISTS refs_by_target;"
                "DROP INDEX IF EXISTS refs_by_assoc;");
            connection.createTables();
            {
                SqliteStatement rows(db, "SELECT id, path, class, data FROM instances_first ORDER BY id");
                while (rows.step()) {
                    int64_t id = rows.columnInt64(0);
                    std::string path = rows.columnText(1);
                    current = "instance " + path;
                    CIMInstance instance = InstanceCodec::decode(rows.columnBlob(3), names);
                    std::string data = InstanceCodec::encode(instance, names);
                    connection.insertInstance(ObjectPathNormalizer::hash(path),
                        names.nameId(String::fromUtf8(rows.columnText(2))), data, id);
                    ++converted;
                }
            }
            {
                current = "the reference rows";
                SqliteStatement rows(db, "SELECT assoc, assoc_class, role, target FROM refs_first");
                while (rows.step()) {
                    connection.insertReference(ObjectPathNormalizer::hash(rows.columnText(3)),
                        rows.columnInt64(0), names.nameId(String::fromUtf8(rows.columnText(2))),
                        names.nameId(String::fromUtf8(rows.columnText(1))));
                }
            }
            current = "its tables";
            names.storePending(connection);
            db.exec("DROP TABLE instances_first; DROP TABLE refs_first;");
            db.exec("PRAGMA user_version=" + std::to_string(RepositoryConnection::LAYOUT_VERSION));
            db.exec("COMMIT");
            connection.converted();
        } catch (...) {
            names.rolledBack();
            try {
                db.exec("ROLLBACK");
            } catch (const SqliteError&) {
            }
            throw;
        }
    } catch (const CIMException& e) {
        PEG_TRACE((TRC_REPOSITORY, Tracer::LEVEL1, "repository database %s not converted: %s",
            file.c_str(), current.c_str()));
        throw SqliteError("repository database " + file + " has the first layout and cannot be "
            "converted: " + current + " cannot be read (" + e.getMessage().toUtf8() + "). Nothing "
            "was changed. Move the file away to start with an empty repository (the module loads "
            "the array's data again) or restore a backup");
    } catch (const SqliteError& e) {
        throw SqliteError("repository database " + file + " has the first layout and cannot be "
            "converted at " + current + ": " + e.what() + ". Nothing was changed. Move the file "
            "away to start with an empty repository (the module loads the array's data again) or "
            "restore a backup");
    }
    PEG_TRACE((TRC_REPOSITORY, Tracer::LEVEL2,
        "repository database %s converted: %lu instances", file.c_str(), (unsigned long)converted));
    // The old rows' pages are free now: the file is written anew without them.
    try {
        db.exec("VACUUM");
    } catch (const SqliteError&) {
        // Only space is lost; the next conversion-free open does not try again.
    }
}

} // namespace Pegasus
