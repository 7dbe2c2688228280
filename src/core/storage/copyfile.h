// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/storage/leftovers.h"

#include <functional>
#include <memory>
#include <stop_token>

namespace ravlin::storage {

/// How a copy reports its progress, and what stops it.
struct CopyWatch
{
    std::function<void(qint64 bytes)> advanced = {}; ///< called for every so many bytes more, on the copying thread
    std::stop_token stop = {};
    Journal *journal = nullptr; ///< told of the temporary file
};

/// How much of a copy is compared with its source once it is on the disk.
enum class CopyCheck
{
    Ends,      ///< its two ends
    Everything ///< for a source that is to be deleted
};

enum class Placing
{
    New,      ///< AlreadyExists if the name is taken
    InPlaceOf ///< takes the place of the file or link of that name, in one step
};

/// A file on its way to another folder. The content goes into a temporary file there, which is synced, compared and
/// only then given the final name. Under that name the copy is complete or absent, whatever happens; a killed program
/// leaves a file that isTemporaryName recognises and cleanLeftovers removes.
///
/// Shares blocks with the source on file systems that can. Attributes and times are copied as far as the target's file
/// system keeps them.
class FileCopy
{
public:
    /// Copies the content and the attributes. Errors: NotAFile for a symbolic link at from, Cancelled, ChangedMeanwhile
    /// (the source), NoSpace and those of reading and writing. After an error nothing is left.
    static Result<FileCopy> prepare(
        const platform::Place &from, const std::shared_ptr<platform::HeldFolder> &folder, const CopyWatch &watch);

    /// Waits until the copy is on the disk and compares it with the source. May run on another thread than prepare().
    Result<void> secure(CopyCheck check);
    /// Gives the copy its final name, in the folder that was passed to prepare(). Only after secure().
    Result<void> place(const QString &name, Placing placing);

private:
    FileCopy(platform::Place from, std::unique_ptr<platform::File> source, platform::FileInfo before,
        TemporaryFile temporary);
    Result<void> fill(const CopyWatch &watch);
    Result<void> compare(CopyCheck check);

    platform::Place m_from;
    std::unique_ptr<platform::File> m_source;
    platform::FileInfo m_before; ///< of the source when it was opened
    TemporaryFile m_temporary;
};

} // namespace ravlin::storage
