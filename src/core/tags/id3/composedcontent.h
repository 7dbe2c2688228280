// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/safewrite.h"

#include <vector>

namespace ravlin::id3 {

/// A file's new content before it is written, to be read like a file. Both must outlive it. Everything but reading is
/// Unsupported.
class ComposedContent : public platform::File
{
public:
    ComposedContent(platform::File &old, const std::vector<storage::Segment> &segments)
        : m_old(old), m_segments(segments)
    {
    }

    /// Bytes.
    qint64 size() const;

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;
    Result<qint64> writeAt(std::span<const char>, qint64) override { return unsupported(); }
    Result<void> truncate(qint64) override { return unsupported(); }
    Result<void> sync() override { return unsupported(); }
    Result<platform::FileInfo> info() override { return unsupported(); }
    Result<qint64> copyFrom(File &, qint64, qint64, qint64) override { return unsupported(); }
    Result<void> takeMetadata(File &) override { return unsupported(); }
    Result<void> setModified(qint64) override { return unsupported(); }
    Result<bool> tryLock() override { return unsupported(); }

private:
    static tl::unexpected<Error> unsupported() { return tl::unexpected(Error{ErrorCode::Unsupported, {}, {}}); }

    platform::File &m_old;
    const std::vector<storage::Segment> &m_segments;
};

} // namespace ravlin::id3
