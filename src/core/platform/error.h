// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <tl/expected.hpp>

namespace ravlin {

/// What went wrong, for callers to branch on. Texts for people are made from it where they are shown.
enum class ErrorCode
{
    NotFound,         ///< no such file or folder
    NotAFolder,       ///< a file where files are to go into
    NotAFile,         ///< a folder, device or the like instead of a plain file
    AccessDenied,     ///< the system refuses access
    ReadOnly,         ///< the file has the read-only attribute
    ReadOnlyDrive,    ///< nothing can be written on the drive
    NoSpace,          ///< the disk or the quota is full
    LowSpace,         ///< refused before writing: too little free space on the drive
    Io,               ///< any other failure to read or write
    ChangedMeanwhile, ///< another program changed the file since it was read
    FileInUse,        ///< another program of ours is writing the file and does not come to an end
    Interrupted,      ///< an earlier save was interrupted, and the file has been changed since
    HalfWritten,      ///< writing failed half-way, and so did putting the old content back
    FileSizeLimit,    ///< the file would be larger than the file system or the user's limit allows
    VerifyFailed,     ///< what was written reads back differently
    BrokenTag,        ///< the tag is damaged so that writing it would lose data
    TooLarge,         ///< a value or a tag is larger than its format allows
    TagTooLarge,      ///< the tag is larger than what is read of one, so nothing is saved from it
    GenreOutOfRange,  ///< the file's genre number is beyond the genre table
    NotStorable,      ///< a value that no tag can hold was left out; all others were saved
    Damaged,          ///< the history is no database, or a broken one
    NewerVersion,     ///< a later version of the program has written it
    NoStream,         ///< no MPEG audio was found
    Settings,         ///< the settings file cannot be read or written
    InvalidArgument,  ///< a name or a request that is not valid here
    NameTooLong,      ///< a name or path is longer than the system takes
    NoOwnName,        ///< a whole drive, or a path that ends in "." or "..", where something with a name is needed
    GivenTwice,       ///< the same file is in a batch twice
    Unsupported,      ///< the file system or the operating system cannot do it
    AlreadyExists,    ///< the name is taken
    Cancelled,        ///< the user stopped it
    IntoItself,       ///< a folder cannot be put into itself
    NoTrash,          ///< the drive has no trash
    NotMp3Name,       ///< refused: the file's own name does not end in ".mp3"
    NotMp3Content,    ///< refused: the file's content is of another format
};

/// Whether the program itself refuses the file, without having tried: no sign that the next one would fail too.
inline bool isRefusal(ErrorCode code)
{
    return code == ErrorCode::NotMp3Name || code == ErrorCode::NotMp3Content || code == ErrorCode::TagTooLarge;
}

/// An error as a value: a code to branch on, the file concerned, and detail in plain English for logs.
struct Error
{
    ErrorCode code = ErrorCode::Io;
    QString path;
    QString detail;
};

template <typename T>
using Result = tl::expected<T, Error>;

} // namespace ravlin
