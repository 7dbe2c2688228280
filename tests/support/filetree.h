// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/nodes.h"
#include "core/platform/path.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

#include <filesystem>
#include <string>

/// Trees of files for the tests of copying, moving and deleting.
namespace ravlin::test {

inline void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

/// Names on disk as the standard library takes them, whatever their bytes.
inline std::filesystem::path standardPath(const QByteArray &bytes)
{
    return std::u8string(bytes.begin(), bytes.end());
}

/// Whether tests can make symbolic links: on Windows that takes a right that users don't have, and Wine has none.
inline constexpr bool MakesLinks = platform::Separator == u'/';

inline void makeLink(const QByteArray &target, const QString &path)
{
    std::error_code error;
    std::filesystem::create_symlink(standardPath(target), standardPath(platform::encodePath(path)), error);
    if (error)
        qFatal("cannot link %s", qPrintable(path));
}

/// Bytes that differ from place to place, so that a piece in the wrong place shows.
inline QByteArray pattern(qsizetype size, quint32 seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = seed * 2654435761U + 1;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// Every path below a folder, leftovers too, with what it is: "file CONTENT", "folder" or "link TARGET".
using Snapshot = QMap<QString, QByteArray>;

inline void addToSnapshot(Snapshot &snapshot, const QString &folder, const QString &prefix)
{
    for (const QString &name : platform::FileSystem::native().names(folder).value_or(std::vector<QString>())) {
        const QString path = platform::inFolder(folder, name);
        const auto node = platform::nodeAt(path);
        if (!node)
            continue;
        if (node->kind == platform::NodeKind::Folder) {
            snapshot.insert(prefix + name, "folder");
            addToSnapshot(snapshot, path, prefix + name + u'/');
        } else if (node->kind == platform::NodeKind::Link) {
            std::error_code error;
            const auto target = std::filesystem::read_symlink(standardPath(platform::encodePath(path)), error);
            snapshot.insert(prefix + name, "link " + QByteArray::fromStdString(target.string()));
        } else {
            const auto file = platform::FileSystem::native().open(path, platform::OpenMode::Read);
            QByteArray content(node->info.size, '\0');
            if (file)
                static_cast<void>((*file)->readAt({content.data(), size_t(content.size())}, 0));
            snapshot.insert(prefix + name, "file " + content);
        }
    }
}

inline Snapshot snapshotOf(const QString &folder)
{
    Snapshot snapshot;
    addToSnapshot(snapshot, folder, {});
    return snapshot;
}

/// A folder on another file system than the temporary folder, if this machine has one to write to.
class OtherDrive
{
public:
    // Of a Windows program, the drive that is the disk of the computer that runs it.
    OtherDrive()
        : m_folder((platform::Separator == u'/' ? QString() : QStringLiteral("Z:")) +
                   QStringLiteral("/dev/shm/ravlin-test-XXXXXX"))
    {
    }

    bool isOther() const
    {
        const auto here = platform::nodeAt(QDir::tempPath());
        const auto there = platform::nodeAt(m_folder.path());
        return m_folder.isValid() && here && there && here->info.device != there->info.device;
    }
    QString path() const { return QDir::toNativeSeparators(m_folder.path()); }

private:
    QTemporaryDir m_folder;
};

} // namespace ravlin::test
