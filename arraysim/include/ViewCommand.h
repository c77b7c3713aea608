#pragma once
// Vexview: the array's configuration and state, one chapter per kind of object.

#include <string>
#include <vector>

#include "ViewDocument.h"
#include "ViewRecords.h"

namespace arraysim {

class ViewCommand {
public:
    enum class Scope {
        All,              // -all: every chapter, pools and logical disks apart
        PhysicalDisks,    // -dpi: the physical disks
        PoolLogicalDisks  // -dli: pools, each followed by its logical disks, in one chapter
    };

    // Exactly one of -all, -dpi, -dli; anything else is a ViewError.
    static Scope ParseArguments(const std::vector<std::string>& args);

    static ViewDocument Build(const ViewRecords& records, Scope scope);

private:
    static void AddArray(ViewDocument& doc, const ViewRecords& records);
    static void AddController(ViewDocument& doc, const ViewRecords& records);
    static void AddEnclosure(ViewDocument& doc, const ViewRecords& records);
    static void AddDisks(ViewDocument& doc, const ViewRecords& records);
    static void AddPool(ViewChapter& chapter, const PoolRecord& pool);
    static void AddLd(ViewChapter& chapter, const LdRecord& ld);
    static void AddAccessControl(ViewDocument& doc, const ViewRecords& records);
};

}  // namespace arraysim
