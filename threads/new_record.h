// The making of a handle's record, freed again unless it is handed out.
#pragma once

#include <cstdlib>
#include <memory>

#include "files/handle.h"

namespace wexelxi {

struct RecordFree {
    void operator()(HandleRecord *record) const { free(record); }
};
using NewRecord = std::unique_ptr<HandleRecord, RecordFree>;

// A zeroed record of a kind; null if there is no memory.
inline NewRecord MakeRecord(HandleKind kind)
{
    NewRecord record(static_cast<HandleRecord *>(calloc(1, sizeof(HandleRecord))));
    if (record)
        record->kind = kind;
    return record;
}

} // namespace wexelxi
