// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"
#include "core/platform/filesystem.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <array>
#include <functional>
#include <memory>

namespace ravlin {

class Captions;
class TagStore;

/// What the user should know of a save beforehand: what the tag-save mode will lose, or not show.
struct SaveOutlook
{
    bool isNotShown = false;      ///< only ID3v1 is written, and the list goes on to show ID3v2
    bool losesCharacters = false; ///< only ID3v1 is left, which has Latin-1 alone
    bool cutsTexts = false;       ///< ... and 30 bytes for a text
    bool losesPictures = false;   ///< ... and nothing else
    /// How many files lose each of the TagFields.
    std::array<int, TagFields.size()> removed{};
    bool isCut = false; ///< there were more files than are looked at

    SaveOutlook &operator|=(const SaveOutlook &other);
    bool operator==(const SaveOutlook &) const = default;
};

/// record: what is going to be written, with HasV2 and HasPicture of the file.
SaveOutlook outlookOf(const TagRecord &record, int mode);
/// The same with the fields that go. onlyEdited: of a save that leaves alone what was not edited.
SaveOutlook outlookOf(const PreparedSave &save, int mode, bool onlyEdited);
/// One line for the user; empty if there is nothing to tell. isOneFile: of a single file, so that no number is needed.
QString outlookText(const Captions &captions, const SaveOutlook &outlook, bool isOneFile = false);

/// Finds out what there is to tell of many files, on a thread of its own. Only the last request counts.
class OutlookReader : public QObject
{
    Q_OBJECT

public:
    /// What a save would write into a file, or why it would leave the file as it is. Called on another thread.
    using Prepare = std::function<Result<PreparedSave>(const QString &path, const TagStore &store)>;
    /// Further files are not looked at; nor are any after so many milliseconds.
    static constexpr qsizetype MostFiles = 1000;
    static constexpr int LongestTime = 3000;

    explicit OutlookReader(platform::FileSystem &fileSystem, QObject *parent = nullptr);
    /// Waits for the file under way.
    ~OutlookReader() override;

    /// Reads the files. ready() follows later.
    void request(const ProgramState &state, const QStringList &paths, Prepare prepare);
    /// Drops the request; no ready() follows.
    void cancel();
    /// Returns when no file is being read any more. Call it after cancel(), on any thread.
    void waitForFile() { m_pool.waitForDone(); }

Q_SIGNALS:
    void ready(const ravlin::SaveOutlook &outlook);

private:
    struct Job;

    void finish(const std::shared_ptr<Job> &job);

    platform::FileSystem &m_fileSystem;
    std::shared_ptr<Job> m_wanted;
    QThreadPool m_pool; ///< last, so that its work ends before the rest is destroyed
};

} // namespace ravlin
