// Disks: there are no drives here, and of a file system only its room is told.
#include <sys/vfs.h>

#include "core/lock.h"
#include "wexelxi/files.h"

using namespace wexelxi;

BOOL GetDiskFreeSpace(const char *path, uint32_t *sectorsPerCluster, uint32_t *bytesPerSector,
                      uint32_t *freeClusters, uint32_t *totalClusters)
{
    LockScope lock;
    if (!sectorsPerCluster || !bytesPerSector || !freeClusters || !totalClusters)
        return FALSE;
    *sectorsPerCluster = *bytesPerSector = *freeClusters = *totalClusters = 0;
    struct statfs room;
    if (statfs(path, &room) == 0) {
        // The clusters are the file system's own blocks, whatever their size.
        *totalClusters = static_cast<uint32_t>(room.f_blocks);
        *freeClusters = static_cast<uint32_t>(room.f_bfree);
        *bytesPerSector = 1024;
        *sectorsPerCluster = 1;
    }
    return FALSE;
}

uint32_t GetLogicalDrives(void)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return 0;
}

uint32_t GetDriveType(const char *)
{
    return GetLogicalDrives();
}

BOOL GetVolumeInformation(const char *, char *, uint32_t, uint32_t *, uint32_t *, uint32_t *,
                          char *, uint32_t)
{
    return GetLogicalDrives() != 0;
}
