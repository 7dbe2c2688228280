// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/frmabout.h"

#include "core/app/idiomas.h"
#include "core/app/programstate.h"
#include "core/platform/desktop.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/plainlabel.h"

#include <QDesktopServices>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionFocusRect>
#include <QVBoxLayout>

#include <utility>

namespace ravlin {

namespace {

constexpr int ProgramIconSize = 96; ///< pixels
constexpr int LogoSize = 32;
constexpr int TextLetters = 52; ///< width of the texts in average letters

constexpr QStringView TagLibrarySite = u"https://taglib.org/";
/// The successor of freedb, whose own site has closed.
constexpr QStringView DatabaseSite = u"https://gnudb.org/";

/// What the program is linked with or contains, and the licences: what every system has, and what belongs to this one's
/// compiler. Names need no translation.
QString libraries()
{
    return QStringLiteral("Qt %1 (LGPL 3), zlib (zlib), SQLite (public domain), tl::expected (CC0 1.0), Lucide (ISC, "
                          "MIT), " RAVLIN_RUNTIME)
        .arg(QLatin1String(qVersion()));
}

/// The palette's own colour for links is made for light windows, and dark palettes often keep it.
QColor linkColour(const QPalette &palette)
{
    const QColor colour = palette.color(QPalette::Link);
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    return isDark && colour.lightness() < 160 ? QColor(122, 178, 255) : colour;
}

/// An address to click: looks like a link, is a button for keyboard and assistive tools. Its text is the address.
class LinkButton final : public QPushButton
{
public:
    explicit LinkButton(const QString &address, QWidget *parent) : QPushButton(address, parent)
    {
        setFlat(true);
        setAutoDefault(false);
        setCursor(Qt::PointingHandCursor);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        QFont underlined = font();
        underlined.setUnderline(true);
        setFont(underlined);
    }

    QSize sizeHint() const override
    {
        return fontMetrics().size(Qt::TextSingleLine, text()) + QSize(2 * Margin, 2 * Margin);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(linkColour(palette()));
        painter.drawText(rect().adjusted(Margin, 0, -Margin, 0), Qt::AlignVCenter | Qt::AlignLeft, text());
        if (hasFocus()) {
            QStyleOptionFocusRect option;
            option.initFrom(this);
            option.backgroundColor = palette().color(QPalette::Window);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
        }
    }

private:
    static constexpr int Margin = 1; ///< pixels around the text, for the frame of the focus
};

QPushButton *logo(const char *name, const QString &text, QStringView site, QWidget *parent)
{
    auto *button = made<QPushButton>(name, parent, text);
    button->setIconSize({LogoSize, LogoSize});
    button->setAutoDefault(false);
    button->setToolTip(site.toString());
    button->setAccessibleDescription(site.toString());
    return button;
}

} // namespace

void frmAbout::openBySystem(const QUrl &address)
{
    QDesktopServices::openUrl(address);
}

frmAbout::frmAbout(const Captions &captions, QWidget *parent, OpenAddress openAddress, const QString &programFolder)
    : QDialog(parent), m_captions(captions), m_openAddress(std::move(openAddress)),
      m_guidePage(guidePage(programFolder, captions.languageName()))
{
    setObjectName(QStringLiteral("frmAbout"));
    createControls();
    createLayout();
    connectControls();
    applyCaptions();
    applyIcons();
    m_ok->setFocus();
}

void frmAbout::createControls()
{
    m_name = made<PlainLabel>("programName", this, QStringLiteral("ravlin!"));
    QFont large = m_name->font();
    large.setPointSizeF(2 * large.pointSizeF());
    large.setBold(true);
    m_name->setFont(large);
    m_version = made<PlainLabel>("lblVersion", this, QStringLiteral("version ") + QStringLiteral(RAVLIN_VERSION));
    m_version->setTextInteractionFlags(Qt::TextSelectableByMouse); // so that it can be copied into a report
    m_makers = made<PlainLabel>("lblDisclaimer", this);
    m_webSite = made<LinkButton>("Label1", this, defaults::WebSite.toString());
    m_mail = made<LinkButton>("Label2", this, defaults::Mail.toString());
    m_thanks = made<PlainLabel>("Label3", this);
    m_libraries = made<PlainLabel>("libraries", this);
    m_tagLibrary = logo("Pic", QStringLiteral("TagLib"), TagLibrarySite, this);
    m_database = logo("Picture1", QStringLiteral("freedb"), DatabaseSite, this);
    m_guide = made<QPushButton>("guide", this);
    m_guide->setAutoDefault(false);
    m_guide->setVisible(!m_guidePage.isEmpty());
    m_ok = made<QPushButton>("cmdOK", this, QStringLiteral("aceptar"));
    m_ok->setDefault(true);
    for (PlainLabel *label : {m_makers, m_thanks, m_libraries}) {
        label->setWordWrap(true);
        label->setMinimumWidth(TextLetters * fontMetrics().averageCharWidth());
    }
}

void frmAbout::createLayout()
{
    auto *picture = made<PlainLabel>("programIcon", this);
    picture->setPixmap(programIcon().pixmap(QSize(ProgramIconSize, ProgramIconSize), devicePixelRatioF()));
    auto *texts = new QVBoxLayout;
    texts->addWidget(m_name);
    texts->addWidget(m_version);
    texts->addSpacing(fontMetrics().height() / 2);
    texts->addWidget(m_makers);
    texts->addWidget(m_webSite);
    texts->addWidget(m_mail);
    texts->addSpacing(fontMetrics().height() / 2);
    texts->addWidget(m_thanks);
    texts->addWidget(m_libraries);
    auto *upper = new QHBoxLayout;
    upper->addWidget(picture, 0, Qt::AlignTop);
    upper->addSpacing(fontMetrics().height());
    upper->addLayout(texts, 1);
    auto *foot = new QHBoxLayout;
    foot->addWidget(m_tagLibrary);
    foot->addWidget(m_database);
    foot->addStretch();
    foot->addWidget(m_guide);
    foot->addWidget(m_ok);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(upper);
    rows->addSpacing(fontMetrics().height() / 2);
    rows->addLayout(foot);
    rows->setSizeConstraint(QLayout::SetFixedSize);
}

void frmAbout::connectControls()
{
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    const auto opens = [this](const QPushButton *button, const QUrl &address) {
        connect(button, &QPushButton::clicked, this, [this, address] { m_openAddress(address); });
    };
    opens(m_webSite, QUrl(m_webSite->text()));
    opens(m_mail, QUrl(QStringLiteral("mailto:") + m_mail->text()));
    opens(m_guide, platform::addressOf(m_guidePage));
    opens(m_tagLibrary, QUrl(TagLibrarySite.toString()));
    opens(m_database, QUrl(DatabaseSite.toString()));
}

void frmAbout::applyCaptions()
{
    setWindowTitle(m_captions.text(Caption::Info));
    m_makers->setText(m_captions.text(Text::AboutAuthors) + u'\n' + m_captions.text(Text::AboutLicence));
    m_webSite->setAccessibleName(m_captions.text(Text::NameWebSite));
    m_webSite->setAccessibleDescription(m_webSite->text());
    m_mail->setAccessibleName(m_captions.text(Text::NameMail));
    m_mail->setAccessibleDescription(m_mail->text());
    m_mail->setToolTip(m_captions.text(Text::TipWriteMail));
    m_thanks->setText(m_captions.text(Text::AboutThanks));
    m_libraries->setText(m_captions.text(Text::AboutLibraries) + m_captions.mark(u':') + u' ' + libraries());
    m_guide->setText(m_captions.text(Text::AboutGuide));
    m_guide->setToolTip(m_captions.text(Text::TipGuide));
    m_ok->setText(m_captions.text(Caption::Ok));
}

void frmAbout::applyIcons()
{
    m_tagLibrary->setIcon(themedIcon(QStringLiteral("tags"), palette()));
    m_database->setIcon(themedIcon(QStringLiteral("disc-3"), palette()));
}

void frmAbout::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_ok != nullptr)
        applyIcons();
}

} // namespace ravlin
