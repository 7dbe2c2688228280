// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace ravlin {

/// What is asked of the service that copies, moves, renames and deletes.
enum class FileOperation
{
    Move = 1,
    Copy = 2,
    Delete = 3,
    Rename = 4
};

/// Bits of FileRequest::flags.
inline constexpr int FlagNoConfirmation = 16; ///< don't ask before something is put into the trash
inline constexpr int FlagAllowUndo = 64;      ///< what is deleted goes into the trash

/// One request, for any number of paths.
struct FileRequest
{
    quintptr owner = 0; ///< the window that dialogs belong to; none
    FileOperation operation = FileOperation::Copy;
    QString source;      ///< one path, or several with a zero character behind each
    QString destination; ///< empty for a deletion
    int flags = 0;
};

/// The result of a request that was carried out in full, or of an empty one.
inline constexpr int ResultDone = 0;
/// The user said no, or stopped it.
inline constexpr int ResultCancelled = 1223;

/// Carries requests out; asks and shows what has to be asked and shown.
class FileService
{
public:
    virtual ~FileService() = default;
    /// ResultDone, ResultCancelled, or another number when something failed.
    virtual int perform(const FileRequest &request) = 0;
};

/// The paths of rows: each the folder (with its separator) followed by the row's text and a zero character.
QString sourceList(const QString &folder, const QStringList &rowTexts);
/// The paths of a request's source.
QStringList sourcePaths(const QString &source);

} // namespace ravlin
