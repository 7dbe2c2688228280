// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/journal.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

/// How the parts of a change are put into the database's columns.
namespace ravlin::history {

/// Cuts long bytes into pieces at places that depend on the bytes around them alone. The same picture in two tags gives
/// the same pieces but for its ends. No piece is longer than 64 KB.
std::vector<QByteArray> piecesOf(const QByteArray &bytes);

/// Keeps a piece and returns its key.
using PieceKeeper = std::function<Result<QByteArray>(const QByteArray &piece)>;
/// Returns the piece of that key.
using PieceFinder = std::function<Result<QByteArray>(const QByteArray &key)>;

/// Segments as one array of bytes; long new bytes are kept as pieces instead.
Result<QByteArray> encodeSegments(const std::vector<storage::Segment> &segments, const PieceKeeper &keep);
/// Damaged if the bytes don't make sense.
Result<std::vector<storage::Segment>> decodeSegments(const QByteArray &bytes, const PieceFinder &find);

/// JSON, so that a text can be searched for. Text that is no Unicode is not kept.
QString encodeValues(const std::vector<storage::ValueChange> &values);
/// What doesn't make sense is left out.
std::vector<storage::ValueChange> decodeValues(const QString &text);
/// How a text stands in what encodeValues returns, without quotation marks.
QString withinValues(const QString &text);

QByteArray encodeTrashed(const std::optional<platform::TrashedItem> &item);
std::optional<platform::TrashedItem> decodeTrashed(const QByteArray &bytes);

/// The short digest by which written bytes are recognised.
QByteArray digestOf(const QByteArray &bytes);

} // namespace ravlin::history
