// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/esperate.h"

#include "core/app/showntext.h"
#include "ui/controls/plain/plainlabel.h"

#include <QFrame>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QStyle>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ravlin {

namespace {

constexpr int FrameWidth = 420;
constexpr std::chrono::milliseconds LatestShow = 2 * esperate::ShowDelay;
constexpr std::chrono::milliseconds WorthShowing = 200ms;
constexpr std::chrono::milliseconds CheckAgain = 50ms;
constexpr int BytesScale = 1000; ///< steps of the bar while it shows bytes

/// A line of plain text that takes the width it gets and leaves out its middle if that is too narrow.
class ElidedLabel : public PlainLabel
{
public:
    explicit ElidedLabel(QWidget *parent) : PlainLabel(parent)
    {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
        const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), alignment());
        style()->drawItemText(&painter, rect(), int(side), palette(), isEnabled(), shown, foregroundRole());
    }
};

QString countText(int value, int maximum)
{
    return maximum > 0 ? u"%1 / %2"_s.arg(value).arg(maximum) : QString();
}

} // namespace

esperate::esperate(QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_frame(new QFrame(this)), m_file(new ElidedLabel(m_frame)), m_count(new PlainLabel(m_frame)),
      m_bar(new QProgressBar(m_frame)), m_stop(new QPushButton(m_frame))
{
    setObjectName(u"esperate"_s);
    setWindowTitle(u"ravlin!"_s);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);

    m_frame->setObjectName(u"frame1"_s);
    m_frame->setFrameShape(QFrame::StyledPanel);
    m_frame->installEventFilter(this);
    m_file->setObjectName(u"file"_s);
    m_count->setObjectName(u"count"_s);
    m_count->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_bar->setObjectName(u"progress"_s);
    m_bar->setTextVisible(false);
    m_stop->setObjectName(u"stop"_s);
    m_stop->setAutoDefault(true); // Enter presses it, although the window is no dialog
    m_stop->hide();
    connect(m_stop, &QPushButton::clicked, this, &esperate::requestStop);

    auto *rows = new QGridLayout(m_frame);
    rows->setContentsMargins(14, 12, 14, 14);
    rows->setHorizontalSpacing(16);
    rows->setVerticalSpacing(8);
    rows->addWidget(m_file, 0, 0);
    rows->addWidget(m_count, 0, 1);
    rows->addWidget(m_bar, 1, 0, 1, 2);
    rows->addWidget(m_stop, 2, 0, 1, 2, Qt::AlignRight);
    rows->setColumnStretch(0, 1);

    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(10, 10, 10, 10);
    outer->addWidget(m_frame);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    m_frame->setFixedWidth(FrameWidth);

    m_dueTimer.setSingleShot(true);
    connect(&m_dueTimer, &QTimer::timeout, this, &esperate::showIfDue);
}

void esperate::BeginProgress(int steps)
{
    m_atWork = true;
    m_dismissed = false;
    m_file->clear();
    m_bar->setValue(0);
    setSteps(steps);
    m_elapsed.start();
    m_dueTimer.start(ShowDelay);
}

void esperate::EndProgress()
{
    m_atWork = false;
    m_dueTimer.stop();
    if (isVisible())
        close();
}

void esperate::advance(int steps)
{
    const int room = m_bar->maximum() - m_bar->value();
    m_bar->setValue(m_bar->value() + std::clamp(steps, 0, room));
    showCount();
}

void esperate::setSteps(int steps)
{
    const int done = m_bar->value();
    m_bar->setRange(0, std::max(steps, 0));
    m_bar->setValue(std::clamp(done, 0, m_bar->maximum()));
    // Room for the longest count from the start, or the line would move with every further digit.
    m_count->setMinimumWidth(fontMetrics().horizontalAdvance(countText(m_bar->maximum(), m_bar->maximum())));
    showCount();
}

void esperate::setBytes(qint64 done, qint64 total)
{
    m_bar->setRange(0, BytesScale);
    const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0;
    m_bar->setValue(std::clamp(static_cast<int>(share * BytesScale), 0, BytesScale));
    const QLocale locale;
    m_count->setText(u"%1 / %2"_s.arg(locale.formattedDataSize(done, 1), locale.formattedDataSize(total, 1)));
}

void esperate::setStopping(Stopping way)
{
    m_stopping = way;
    const bool stoppable = way != Stopping::No;
    m_stop->setVisible(stoppable);
    m_stop->setEnabled(stoppable);
    setAttribute(Qt::WA_ShowWithoutActivating, !stoppable); // for its keys
}

void esperate::setStopText(const QString &text)
{
    m_stop->setText(text);
}

void esperate::requestStop()
{
    if (!m_stop->isEnabled())
        return;
    m_stop->setEnabled(false);
    Q_EMIT stopRequested();
}

void esperate::setCurrentFile(const QString &file)
{
    m_file->setText(shownLine(file));
}

int esperate::value() const
{
    return m_bar->value();
}

int esperate::maximum() const
{
    return m_bar->maximum();
}

void esperate::showCount()
{
    m_count->setText(countText(value(), maximum()));
}

void esperate::showIfDue()
{
    if (!m_atWork || m_dismissed || isVisible())
        return;
    if (isNearlyDone(std::chrono::milliseconds(m_elapsed.elapsed())))
        m_dueTimer.start(CheckAgain);
    else
        show();
    if (isVisible() && m_stopping != Stopping::No)
        activateWindow(); // a window manager may leave the focus with the main window, where no key counts now
}

/// Whether, at the pace so far, the work will end before the window is of any use.
bool esperate::isNearlyDone(std::chrono::milliseconds elapsed) const
{
    if (elapsed >= LatestShow || value() == 0)
        return false;
    return elapsed * (maximum() - value()) / value() < WorthShowing;
}

void esperate::centre()
{
    const QScreen *onScreen = parentWidget() ? parentWidget()->screen() : screen();
    const QRect available = onScreen->availableGeometry();
    const QRect around = parentWidget() ? parentWidget()->window()->frameGeometry() : available;
    QRect place(QPoint(), size());
    place.moveCenter(around.center());
    place.moveLeft(std::clamp(place.left(), available.left(), std::max(available.left(), available.right() - width())));
    place.moveTop(std::clamp(place.top(), available.top(), std::max(available.top(), available.bottom() - height())));
    move(place.topLeft());
}

void esperate::showEvent(QShowEvent *event)
{
    centre();
    if (m_stopping != Stopping::No)
        m_stop->setFocus();
    QWidget::showEvent(event);
}

void esperate::closeEvent(QCloseEvent *event)
{
    if (m_atWork && m_stopping == Stopping::ByButtonOrClosing) {
        event->ignore();
        requestStop();
        return;
    }
    m_dismissed = true;
    QWidget::closeEvent(event);
}

void esperate::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape)
        QWidget::keyPressEvent(event);
    else if (m_stopping == Stopping::No)
        close();
    else
        requestStop();
}

/// A click anywhere on the frame closes the window; the controls in it let the mouse through.
bool esperate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_frame && event->type() == QEvent::MouseButtonPress) {
        event->accept(); // or the release would go to the window
        return true;
    }
    if (watched == m_frame && event->type() == QEvent::MouseButtonRelease) {
        const auto *release = static_cast<QMouseEvent *>(event);
        if (m_stopping != Stopping::ByButtonOrClosing && release->button() == Qt::LeftButton &&
            m_frame->rect().contains(release->position().toPoint()))
            close();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace ravlin
