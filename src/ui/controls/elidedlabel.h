// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/controls/plain/plainlabel.h"

namespace ravlin {

/// A label of one line of plain text. If the text is too long it leaves out the middle, and the tooltip shows all.
class ElidedLabel : public PlainLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    const QString &fullText() const { return m_fullText; }
    /// Both are made fit by shownLine(). The tooltip shows detail; without detail, the text if that is cut.
    void setFullText(const QString &text, const QString &detail = {});

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void elide();

    QString m_fullText;
    QString m_detail;
};

} // namespace ravlin
