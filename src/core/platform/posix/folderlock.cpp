// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/folderlock.h"

#include "core/platform/filesystem.h"
#include "core/platform/posix/systemerror.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ravlin::platform {
namespace {

class PosixFolderLock final : public FolderLock
{
public:
    explicit PosixFolderLock(int descriptor) : m_descriptor(descriptor) {}
    ~PosixFolderLock() override { ::close(m_descriptor); }
    PosixFolderLock(const PosixFolderLock &) = delete;
    PosixFolderLock &operator=(const PosixFolderLock &) = delete;

private:
    const int m_descriptor;
};

} // namespace

std::unique_ptr<FolderLock> lockFolder(const QString &path)
{
    const QByteArray native = encodePath(path);
    const int descriptor = uninterrupted(
        [&] { return ::open(native.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK); });
    if (descriptor < 0)
        return nullptr;
    auto lock = std::make_unique<PosixFolderLock>(descriptor);
    if (uninterrupted([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) != 0)
        return nullptr;
    return lock;
}

} // namespace ravlin::platform
