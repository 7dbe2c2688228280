// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/platform/trash.h"

#include <QByteArray>

#include <optional>
#include <utility>
#include <vector>

/// Where changes are recorded before they are made, so that an interrupted one can be finished by whoever starts next
/// and a finished one can be taken back. What changes files gets a Journal* and works without one, too.
namespace ravlin::storage {

/// One segment of a file's new content.
struct Segment
{
    QByteArray bytes;      ///< the new bytes; empty for a range of the old file
    qint64 oldOffset = -1; ///< where the range starts in the old file; -1 for new bytes
    qint64 length = 0;     ///< bytes

    static Segment fresh(QByteArray data)
    {
        const qint64 size = data.size();
        return {std::move(data), -1, size};
    }
    static Segment kept(qint64 offset, qint64 length) { return {{}, offset, length}; }
    bool isKept() const { return oldOffset >= 0; }

    bool operator==(const Segment &) const = default;
};

/// A value as people see it, before and after a change: of a tag's field, say.
struct ValueChange
{
    QString name; ///< not translated: "artist"
    QString before;
    QString after;

    bool operator==(const ValueChange &) const = default;
};

enum class ChangeKind
{
    Content, ///< a file gets other bytes, and keeps its path
    Move,    ///< a file or folder gets another path, be it only another name
    Copy,    ///< a file or folder is made from another one
    Trash,
    Delete, ///< for good
    Create, ///< a file or folder is made from nothing
};

/// How a file gets other bytes, which decides what an interruption can leave.
enum class ContentWay
{
    OneStep, ///< one write inside one block, or a new file in the old one's place: old or new
    Patches, ///< writes in several blocks; the size stays
    Redo,    ///< overwritten under a redo file beside it
};

/// A change that is about to be made. Paths are those that messages show.
struct ChangeRecord
{
    ChangeKind kind = ChangeKind::Content;
    QString path;         ///< of the file before; empty for Create
    QString newPath = {}; ///< after; empty for Content, Trash and Delete
    bool isFolder = false;
    platform::FileInfo before = {}; ///< if there was a file
    platform::FileIdentity identity = {};

    // For Content.
    ContentWay way = ContentWay::OneStep;
    qint64 newSize = 0;                   ///< bytes
    std::vector<Segment> inverse = {};    ///< the old content, made of its lost bytes and ranges of the new content
    QByteArray written = {};              ///< the bytes of the new content that no kept range of inverse covers
    std::vector<ValueChange> values = {}; ///< what it means

    // For Move.
    QString aside = {}; ///< a path that the file bears meanwhile
};

/// What is known once a change was made.
struct ChangeDone
{
    platform::FileInfo after = {};                     ///< of the file at its new place; none for Trash and Delete
    bool replaced = false;                             ///< something had the new path
    std::optional<platform::TrashedItem> trashed = {}; ///< for Trash the file itself, else what was replaced
};

/// One thread at a time.
class Journal
{
public:
    using Ticket = qint64;

    virtual ~Journal() = default;

    /// Records a change. Once this returns, the record survives the end of the program, and for ContentWay::Patches a
    /// power cut. Nothing if the change could not be recorded: it may go on if an interruption cannot hurt, and can't
    /// be taken back then.
    virtual std::optional<Ticket> begin(const ChangeRecord &change) = 0;
    /// What became of it. An error: all is as it was before.
    virtual void end(Ticket ticket, const Result<ChangeDone> &done) = 0;

    /// Records a temporary file or folder before it is made. end: it is gone, or has got its final name.
    virtual std::optional<Ticket> beginTemporary(const QString &folder, const QString &name) = 0;
    virtual void endTemporary(Ticket ticket) = 0;

    /// Another program had changed the file since the user saw it, and it was changed all the same.
    virtual void addChangedByOther(const QString &path) { Q_UNUSED(path) }
};

} // namespace ravlin::storage
