// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/mpeg/xanalyze.h"
#include "support/mpegbuilder.h"

namespace ravlin::test {

/// The analysis of bytes in memory.
inline XAnalyzer::Outcome analyse(const QByteArray &bytes)
{
    platform::MemorySource source(bytes);
    XAnalyzer analyzer(platform::FileSystem::native());
    return analyzer.analyse(source);
}

inline XAnalyzer::Outcome analyse(const MpegBuilder &builder)
{
    return analyse(builder.data());
}

} // namespace ravlin::test
