// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/scratchfolder.h"
#include "core/storage/safewrite.h"
#include "support/fakejournal.h"

#include <unistd.h>

/// A file with an old and a new content, for tests that disturb the change from one to the other.
namespace ravlin::test {

/// The ways in which rewriteFile writes.
enum class Way
{
    InPlace,
    Patched, ///< several blocks, under a record
    Appended,
    Cut,
    Replaced,
    Rewritten
};

inline constexpr Way AllWays[] = {Way::InPlace, Way::Patched, Way::Appended, Way::Cut, Way::Replaced, Way::Rewritten};

inline const char *nameOf(Way way)
{
    constexpr const char *Names[] = {"in place", "patched", "appended", "cut", "replaced", "rewritten"};
    return Names[static_cast<int>(way)];
}

class RewriteCase
{
public:
    explicit RewriteCase(Way way) : m_way(way)
    {
        if (way == Way::Rewritten)
            static_cast<void>(::link(
                platform::encodePath(path()), platform::encodePath(m_folder.path(QStringLiteral("second name.mp3")))));
        m_names = m_folder.names();
    }

    const ScratchFolder &folder() const { return m_folder; }
    QString path() const { return m_path; }
    const QByteArray &oldContent() const { return m_old; }
    QByteArray newContent() const
    {
        switch (m_way) {
        case Way::InPlace:
            return m_old.left(100) + QByteArray(3000, 'n') + m_old.mid(3100);
        case Way::Patched:
            return m_old.left(3000) + QByteArray(9000, 'n') + m_old.mid(12'000, 8900) + QByteArray(100, 'm');
        case Way::Appended:
            return m_old + QByteArray(128, 'n');
        case Way::Cut:
            return m_old.chopped(128);
        case Way::Replaced:
        case Way::Rewritten:
            break;
        }
        return QByteArray(7000, 'n') + m_old;
    }

    /// From the old content to the new.
    std::vector<storage::Segment> forward() const
    {
        using storage::Segment;
        switch (m_way) {
        case Way::InPlace:
            return {
                Segment::kept(0, 100), Segment::fresh(QByteArray(3000, 'n')), Segment::kept(3100, m_old.size() - 3100)};
        case Way::Patched:
            return {Segment::kept(0, 3000), Segment::fresh(QByteArray(9000, 'n')), Segment::kept(12'000, 8900),
                Segment::fresh(QByteArray(100, 'm'))};
        case Way::Appended:
            return {Segment::kept(0, m_old.size()), Segment::fresh(QByteArray(128, 'n'))};
        case Way::Cut:
            return {Segment::kept(0, m_old.size() - 128)};
        case Way::Replaced:
        case Way::Rewritten:
            break;
        }
        return {Segment::fresh(QByteArray(7000, 'n')), Segment::kept(0, m_old.size())};
    }
    /// From the new content to the old.
    std::vector<storage::Segment> backward() const
    {
        using storage::Segment;
        switch (m_way) {
        case Way::InPlace:
            return {Segment::fresh(m_old.left(3100)), Segment::kept(3100, m_old.size() - 3100)};
        case Way::Patched:
            return {Segment::fresh(m_old)};
        case Way::Appended:
            return {Segment::kept(0, m_old.size())};
        case Way::Cut:
            return {Segment::kept(0, m_old.size() - 128), Segment::fresh(m_old.last(128))};
        case Way::Replaced:
        case Way::Rewritten:
            break;
        }
        return {Segment::kept(7000, m_old.size())};
    }

    Result<storage::WriteOutcome> rewriteForward(
        platform::FileSystem &fileSystem, const storage::WriteOptions &options = {}) const
    {
        return rewrite(fileSystem, forward(), options);
    }
    Result<storage::WriteOutcome> rewrite(platform::FileSystem &fileSystem,
        const std::vector<storage::Segment> &segments, storage::WriteOptions options = {}) const
    {
        FakeJournal journal(m_journalFolder.path(QStringLiteral("journal")));
        if (m_way == Way::Patched)
            options.journal = &journal;
        return storage::rewriteFile(fileSystem, m_path, infoOf(m_path), segments, options);
    }
    /// What the next start of a program does.
    bool recover() const
    {
        FakeJournal::rollBack(m_journalFolder.path(QStringLiteral("journal")));
        return storage::recoverFile(platform::FileSystem::native(), m_path).has_value();
    }
    /// Whether the folder holds only the files it began with.
    bool isClean() const { return m_folder.names() == m_names; }
    /// Whether cleaning has left nothing but, at most, a new file that was whole when the program died right before its
    /// last step: it has the file's permissions already, so that nothing tells it from a file of the user's.
    bool isCleaned() const
    {
        QStringList names = m_folder.names();
        names.removeIf([this](const QString &name) { return m_names.contains(name); });
        const auto isWhole = [this](const QString &name) {
            const QString path = m_folder.path(name);
            return storage::isLeftoverName(name) && infoOf(path).permissions == infoOf(m_path).permissions &&
                   infoOf(path).permissions != 0600 &&
                   (ScratchFolder::read(path) == newContent() || ScratchFolder::read(path) == m_old);
        };
        return names.size() <= 1 && std::all_of(names.begin(), names.end(), isWhole);
    }
    void removeWhatStayed() const
    {
        for (const QString &name : m_folder.names()) {
            if (!m_names.contains(name))
                QFile::remove(m_folder.path(name));
        }
    }
    bool hasOnlyLeftovers() const
    {
        const QStringList names = m_folder.names();
        return std::all_of(names.begin(), names.end(),
            [this](const QString &name) { return m_names.contains(name) || storage::isLeftoverName(name); });
    }

private:
    static QByteArray makeOld()
    {
        QByteArray bytes(21'000, Qt::Uninitialized);
        quint32 state = 1;
        for (char &byte : bytes) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<char>(state >> 24);
        }
        return bytes;
    }

    Way m_way;
    ScratchFolder m_folder;
    ScratchFolder m_journalFolder;
    QByteArray m_old = makeOld();
    QString m_path = m_folder.write(QStringLiteral("song.mp3"), m_old);
    QStringList m_names;
};

} // namespace ravlin::test
