// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

/// Text of CD databases.
namespace ravlin::cddb {

/// Puts text on one line: replaces control characters by blanks and trims.
QString onOneLine(const QString &text);

struct ArtistAndTitle
{
    QString artist;
    QString title;
    bool isDivided = false; ///< if false, there was no " / " and both are the whole text
};
/// Splits "artist / title" at the first " / " and puts each part on one line.
ArtistAndTitle dividedTitle(const QString &text);

/// Whether the artist of a disc stands for several artists ("Various", "Varios artistas", "Artistes divers").
bool isVariousArtists(QStringView artist);

} // namespace ravlin::cddb
