// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/recorder.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"

namespace ravlin::storage {

namespace {

void describe(platform::FileSystem &fileSystem, const QString &path, ChangeRecord &change)
{
    const auto place = platform::placeAt(fileSystem, path);
    const auto node = place ? place->folder->node(place->name) : tl::unexpected(place.error());
    if (!node)
        return;
    change.before = node->info;
    change.isFolder = node->kind == platform::NodeKind::Folder;
    change.identity = {node->info.device, node->info.inode, 0};
    if (node->kind != platform::NodeKind::File)
        return;
    if (const auto file = place->folder->openFile(place->name, platform::OpenMode::Read))
        change.identity = (*file)->identity().value_or(change.identity);
}

} // namespace

QString recordedPath(platform::FileSystem &fileSystem, const QString &path)
{
    if (path.isEmpty())
        return path;
    const QString plain = platform::withoutEndSeparator(path);
    const auto folder = fileSystem.canonicalPath(platform::folderOf(plain));
    const QString name = platform::nameOf(plain);
    return folder && !name.isEmpty() ? platform::inFolder(*folder, name) : path;
}

Recorder::Ticket Recorder::begin(ChangeKind kind, const QString &path, const QString &newPath, const QString &aside)
{
    if (!isOn())
        return {};
    ChangeRecord change;
    change.kind = kind;
    change.path = recordedPath(m_fileSystem, path);
    change.newPath = recordedPath(m_fileSystem, newPath);
    change.aside = recordedPath(m_fileSystem, aside);
    describe(m_fileSystem, path, change);
    return m_journal->begin(change);
}

Recorder::Ticket Recorder::beginCreate(const QString &path, bool isFolder)
{
    if (!isOn())
        return {};
    ChangeRecord change;
    change.kind = ChangeKind::Create;
    change.newPath = recordedPath(m_fileSystem, path);
    change.isFolder = isFolder;
    return m_journal->begin(change);
}

void Recorder::done(
    Ticket ticket, const QString &newPath, bool replaced, const std::optional<platform::TrashedItem> &trashed)
{
    if (!ticket)
        return;
    ChangeDone done;
    done.replaced = replaced;
    done.trashed = trashed;
    if (!newPath.isEmpty()) {
        const auto place = platform::placeAt(m_fileSystem, newPath);
        const auto node = place ? place->folder->node(place->name) : tl::unexpected(place.error());
        if (node)
            done.after = node->info;
    }
    m_journal->end(*ticket, done);
}

void Recorder::failed(Ticket ticket, const Error &error)
{
    if (ticket)
        m_journal->end(*ticket, tl::unexpected(error));
}

} // namespace ravlin::storage
