// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ravlin {

/// A label of one line of plain text that may be longer than its place: the middle is left out then, and the tooltip
/// tells it.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    const QString &fullText() const { return m_fullText; }
    /// The tooltip tells detail, in plain text; without it the text, where it is cut.
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
