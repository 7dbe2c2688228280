// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/notice.h"

#include <QFrame>
#include <QString>

#include <optional>

class QToolButton;

namespace ravlin {

class Captions;
class ElidedLabel;

/// The bar below the list that tells what the last operation did, and what was typed and not saved; it is no dialog and
/// takes no focus. Hidden while there is nothing to tell. Its text is its accessible name, so that assistive tools read
/// it out.
///
/// Shows and reports clicks; the main window acts on them.
class aviso : public QFrame
{
    Q_OBJECT

public:
    /// captions outlives the bar.
    explicit aviso(const Captions &captions, QWidget *parent);

    /// Replaces what was told of the operation before; nothing of one that changed nothing and met no obstacle.
    void showSummary(const history::Summary &summary, SummaryOf what = SummaryOf::Change);
    /// The summary that is shown, if any.
    const std::optional<history::Summary> &summary() const { return m_summary; }
    /// Tells what became of changes that were interrupted, until the next operation.
    void showRecovery(const history::Recovery &recovery);
    /// Says beside it that typed texts of a file were not saved. An empty path: there are none.
    void showUnsaved(const QString &path);
    /// Offers the protections.
    void showOffer(bool isOffered);
    void applyCaptions();

    QString text() const;

Q_SIGNALS:
    void detailsRequested();
    void undoRequested(qint64 entry);
    void putBackRequested();
    void chooseRequested();
    /// The user has closed it: what it offered is declined.
    void dismissed();

protected:
    void changeEvent(QEvent *event) override;

private:
    void applyIcons();
    void refresh();

    const Captions &m_captions;
    std::optional<history::Summary> m_summary;
    SummaryOf m_summaryOf = SummaryOf::Change;
    std::optional<history::Recovery> m_recovery;
    QString m_unsaved;
    bool m_isOffered = false;
    ElidedLabel *m_label = nullptr;
    QToolButton *m_details = nullptr;
    QToolButton *m_undo = nullptr;
    QToolButton *m_putBack = nullptr;
    QToolButton *m_choose = nullptr;
    QToolButton *m_close = nullptr;
};

} // namespace ravlin
