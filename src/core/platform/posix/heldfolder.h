// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// Folders behind a descriptor.
namespace ravlin::platform {

/// A path or name as the system takes it. The system stops at a zero byte, so a path with one would name another file.
class NativePath
{
public:
    explicit NativePath(const QString &path) : m_bytes(encodePath(path)) {}

    bool isValid() const { return !m_bytes.contains('\0'); }
    const char *bytes() const { return m_bytes.constData(); }

private:
    QByteArray m_bytes;
};

/// Does the work of FileSystem::openFolder.
Result<std::shared_ptr<HeldFolder>> openHeldFolder(const QString &path);
/// Does the work of FileSystem::follow.
Result<Place> followLinks(const QString &path);

/// Opens a folder as openat(2) does with flags, but fails with ELOOP if a part of the path is a link: for systems
/// that have no such call. Returns a descriptor, or -1 and errno.
int openStepByStep(const char *path, int flags);

} // namespace ravlin::platform
