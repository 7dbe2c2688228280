// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/discapply.h"
#include "core/online/cddb/disccontents.h"
#include "core/online/cddb/xmcdrecord.h"
#include "ui/controls/splitpanel.h"

#include <QStringList>

#include <optional>
#include <vector>

class QIcon;

namespace ravlin {

class Captions;
class RowList;

/// The files (`archivo`) and a disc's tracks (`correlacion`) side by side, each in an order the user chooses. What
/// stands in the same row belongs together; a track that does not play as long as its file has a remark. Files are
/// numbered by their place among the paths, from 0, wherever their row is.
class FacingLists : public SplitPanel
{
    Q_OBJECT

public:
    FacingLists(const Captions &captions, QWidget *parent);

    RowList *files() const { return m_files; }
    RowList *tracks() const { return m_tracks; }
    void applyCaptions();
    void setRemarkIcon(const QIcon &icon);

    /// Shows the names without the folder, which ends with a separator.
    void setFiles(const QStringList &paths, const QString &folder);
    QString fileName(int file) const;
    std::vector<int> fileOrder() const;
    void setPlayed(int file, const PlayedAudio &played);
    void setFileRemark(int file, const QString &remark);
    void setDisc(const DiscRecord &disc);
    bool hasDisc() const { return m_disc.has_value(); }

    /// Must be called when playing times have changed; moved or new rows are compared anyway.
    void compareLengths();
    /// Sentences about the whole; none without a disc.
    QStringList remarks() const;

    bool hasFiles(bool onlySelected) const;
    /// The files in row order, each with the track beside it.
    std::vector<DiscFile> pairedFiles(bool onlySelected) const;

Q_SIGNALS:
    /// Rows were moved or replaced, and have been compared.
    void orderChanged();
    void fileSelectionEdited();

private:
    int rowOf(int file) const;

    const Captions &m_captions;
    QStringList m_paths;
    std::vector<std::optional<qint64>> m_fileFrames; ///< by file, once known
    std::optional<DiscRecord> m_disc;
    int m_differing = 0; ///< rows whose playing times differ
    RowList *m_files;
    RowList *m_tracks;
};

} // namespace ravlin
