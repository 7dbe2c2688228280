// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/filetree.h"

#include <sys/mount.h>

namespace ravlin::test {

/// A small drive of a test's own, in memory; only where mounting is permitted.
class MountedDrive
{
public:
    MountedDrive(QString path, const char *size) : m_path(std::move(path))
    {
        QDir().mkpath(m_path);
        const QByteArray options = QByteArray("size=") + size;
        m_isMounted = ::mount("tmpfs", native().constData(), "tmpfs", 0, options.constData()) == 0;
    }
    ~MountedDrive()
    {
        if (m_isMounted)
            ::umount2(native().constData(), MNT_DETACH);
    }
    Q_DISABLE_COPY_MOVE(MountedDrive)

    bool isMounted() const { return m_isMounted; }
    QString path() const { return m_path; }
    bool makeReadOnly()
    {
        return ::mount(nullptr, native().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

    /// Leaves no byte for another file.
    bool fill()
    {
        QFile file(m_path + QStringLiteral("/filling"));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            return false;
        for (qsizetype size = 1024 * 1024; size > 0; size /= 2) {
            while (file.write(QByteArray(size, 'x')) == size)
                continue;
        }
        return true;
    }

private:
    QByteArray native() const { return QFile::encodeName(m_path); }

    const QString m_path;
    bool m_isMounted = false;
};

} // namespace ravlin::test
