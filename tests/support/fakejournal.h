// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/journal.h"

#include <QDataStream>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <map>

/// A journal that keeps what it is told: in memory and, so that another process can settle what was interrupted, the
/// pending change of a file's content in a file.
namespace ravlin::test {

class FakeJournal final : public storage::Journal
{
public:
    struct Kept
    {
        storage::ChangeRecord change;
        std::optional<Result<storage::ChangeDone>> done = {};
        bool wasThere = false; ///< the old path, when the change was announced
        bool newWasThere = false;

        bool isMade() const { return done && done->has_value(); }
    };

    FakeJournal() = default;
    /// file: where the pending change is kept.
    explicit FakeJournal(QString file) : m_file(std::move(file)) {}

    bool refuses = false; ///< nothing can be recorded
    std::vector<Kept> kept;
    std::vector<QString> temporaries;          ///< all that were announced
    std::map<Ticket, QString> openTemporaries; ///< those that are still there
    QStringList changedByOthers;
    std::function<void()> onBegin; ///< looks at the file before it is changed

    std::optional<Ticket> begin(const storage::ChangeRecord &change) override
    {
        if (onBegin)
            onBegin();
        if (refuses)
            return std::nullopt;
        kept.push_back({change, {}, isThere(change.path), isThere(change.newPath)});
        if (!m_file.isEmpty())
            store(change);
        return static_cast<Ticket>(kept.size() - 1);
    }
    void end(Ticket ticket, const Result<storage::ChangeDone> &done) override
    {
        Kept &ended = kept.at(static_cast<std::size_t>(ticket));
        if (ended.done)
            qFatal("a change has ended twice");
        ended.done = done;
        if (!m_file.isEmpty())
            QFile::remove(m_file);
    }
    void addChangedByOther(const QString &path) override { changedByOthers << path; }
    std::optional<Ticket> beginTemporary(const QString &folder, const QString &name) override
    {
        if (refuses)
            return std::nullopt;
        temporaries.push_back(platform::inFolder(folder, name));
        const auto ticket = static_cast<Ticket>(temporaries.size());
        openTemporaries[ticket] = temporaries.back();
        return ticket;
    }
    void endTemporary(Ticket ticket) override { openTemporaries.erase(ticket); }

    /// Those that were made, in the order in which they were announced.
    std::vector<Kept> made() const
    {
        std::vector<Kept> found;
        std::ranges::copy_if(kept, std::back_inserter(found), &Kept::isMade);
        return found;
    }
    bool hasPending() const
    {
        return !std::ranges::all_of(kept, [](const Kept &one) { return one.done.has_value(); });
    }

    /// Undoes the patches of a change that was interrupted. False if there is none.
    static bool rollBack(const QString &file)
    {
        QFile stored(file);
        if (!stored.open(QIODevice::ReadOnly))
            return false;
        QDataStream in(&stored);
        QString path;
        qint32 way = 0;
        std::vector<std::pair<qint64, QByteArray>> old;
        qint64 count = 0;
        in >> path >> way >> count;
        for (qint64 i = 0; i < count; ++i) {
            old.emplace_back();
            in >> old.back().first >> old.back().second;
        }
        // Only patches leave the file between two states.
        QFile target(path);
        const bool isOurs = in.status() == QDataStream::Ok && way == static_cast<qint32>(storage::ContentWay::Patches);
        for (const auto &[offset, bytes] : isOurs ? old : decltype(old)()) {
            if (!target.open(QIODevice::ReadWrite) || !target.seek(offset) || target.write(bytes) != bytes.size())
                qFatal("the file could not be rolled back");
            target.close();
        }
        stored.remove();
        return true;
    }

private:
    static bool isThere(const QString &path)
    {
        const QFileInfo info(path);
        return !path.isEmpty() && (info.exists() || info.isSymLink());
    }

    void store(const storage::ChangeRecord &change)
    {
        std::vector<std::pair<qint64, QByteArray>> old;
        qint64 offset = 0;
        for (const storage::Segment &segment : change.inverse) {
            if (!segment.isKept())
                old.emplace_back(offset, segment.bytes);
            offset += segment.length;
        }
        QFile stored(m_file + QStringLiteral(".new"));
        if (!stored.open(QIODevice::WriteOnly))
            qFatal("the journal could not be written");
        QDataStream out(&stored);
        out << change.path << static_cast<qint32>(change.way) << static_cast<qint64>(old.size());
        for (const auto &[at, bytes] : old)
            out << at << bytes;
        stored.close();
        QFile::remove(m_file);
        if (!stored.rename(m_file))
            qFatal("the journal could not be written");
    }

    QString m_file;
};

} // namespace ravlin::test
