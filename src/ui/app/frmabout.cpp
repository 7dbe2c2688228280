// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/frmabout.h"

#include "core/app/guide.h"
#include "core/app/idiomas.h"
#include "core/app/options.h"
#include "ui/controls/icons.h"
#include "ui/controls/linkbutton.h"
#include "ui/controls/making.h"

#include <QDesktopServices>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace ravlin {

namespace {

constexpr int ProgramIconSize = 96; ///< pixels
constexpr int LogoSize = 32;
constexpr int TextLetters = 52; ///< width of the texts in average letters

constexpr QStringView TagLibrarySite = u"https://taglib.org/";
/// Carries on freedb, whose own site has closed.
constexpr QStringView DatabaseSite = u"https://gnudb.org/";

/// What the program is made with, and under which licences. Names need no translation.
QString libraries()
{
    return QStringLiteral("Qt %1 (LGPL 3), tl::expected (CC0 1.0), Lucide (ISC, MIT)").arg(QLatin1String(qVersion()));
}

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
    cmdOK->setFocus();
}

void frmAbout::createControls()
{
    m_name = made<QLabel>("programName", this, QStringLiteral("ravlin!"));
    QFont large = m_name->font();
    large.setPointSizeF(2 * large.pointSizeF());
    large.setBold(true);
    m_name->setFont(large);
    lblVersion = made<QLabel>("lblVersion", this, QStringLiteral("version ") + QStringLiteral(RAVLIN_VERSION));
    lblVersion->setTextInteractionFlags(Qt::TextSelectableByMouse); // to be copied into a report
    lblDisclaimer = made<QLabel>("lblDisclaimer", this);
    Label1 = made<LinkButton>("Label1", this, defaults::WebSite.toString());
    Label2 = made<LinkButton>("Label2", this, defaults::Mail.toString());
    Label3 = made<QLabel>("Label3", this);
    m_libraries = made<QLabel>("libraries", this);
    Pic = logo("Pic", QStringLiteral("TagLib"), TagLibrarySite, this);
    Picture1 = logo("Picture1", QStringLiteral("freedb"), DatabaseSite, this);
    m_guide = made<QPushButton>("guide", this);
    m_guide->setAutoDefault(false);
    m_guide->setVisible(!m_guidePage.isEmpty());
    cmdOK = made<QPushButton>("cmdOK", this, QStringLiteral("aceptar"));
    cmdOK->setDefault(true);
    for (QLabel *label : {lblDisclaimer, Label3, m_libraries}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setMinimumWidth(TextLetters * fontMetrics().averageCharWidth());
    }
}

void frmAbout::createLayout()
{
    auto *picture = made<QLabel>("programIcon", this);
    picture->setPixmap(programIcon().pixmap(QSize(ProgramIconSize, ProgramIconSize), devicePixelRatioF()));
    auto *texts = new QVBoxLayout;
    texts->addWidget(m_name);
    texts->addWidget(lblVersion);
    texts->addSpacing(fontMetrics().height() / 2);
    texts->addWidget(lblDisclaimer);
    texts->addWidget(Label1);
    texts->addWidget(Label2);
    texts->addSpacing(fontMetrics().height() / 2);
    texts->addWidget(Label3);
    texts->addWidget(m_libraries);
    auto *upper = new QHBoxLayout;
    upper->addWidget(picture, 0, Qt::AlignTop);
    upper->addSpacing(fontMetrics().height());
    upper->addLayout(texts, 1);
    auto *foot = new QHBoxLayout;
    foot->addWidget(Pic);
    foot->addWidget(Picture1);
    foot->addStretch();
    foot->addWidget(m_guide);
    foot->addWidget(cmdOK);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(upper);
    rows->addSpacing(fontMetrics().height() / 2);
    rows->addLayout(foot);
    rows->setSizeConstraint(QLayout::SetFixedSize);
}

void frmAbout::connectControls()
{
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    const auto opens = [this](const QPushButton *button, const QUrl &address) {
        connect(button, &QPushButton::clicked, this, [this, address] { m_openAddress(address); });
    };
    opens(Label1, QUrl(Label1->text()));
    opens(Label2, QUrl(QStringLiteral("mailto:") + Label2->text()));
    opens(m_guide, QUrl::fromLocalFile(m_guidePage));
    opens(Pic, QUrl(TagLibrarySite.toString()));
    opens(Picture1, QUrl(DatabaseSite.toString()));
}

void frmAbout::applyCaptions()
{
    setWindowTitle(m_captions.text(Caption::Info));
    lblDisclaimer->setText(m_captions.text(Text::AboutAuthors) + u'\n' + m_captions.text(Text::AboutLicence));
    Label1->setAccessibleName(m_captions.text(Text::NameWebSite));
    Label1->setAccessibleDescription(Label1->text());
    Label2->setAccessibleName(m_captions.text(Text::NameMail));
    Label2->setAccessibleDescription(Label2->text());
    Label2->setToolTip(m_captions.text(Text::TipWriteMail));
    Label3->setText(m_captions.text(Text::AboutThanks));
    m_libraries->setText(m_captions.text(Text::AboutLibraries) + QStringLiteral(": ") + libraries());
    m_guide->setText(m_captions.text(Text::AboutGuide));
    m_guide->setToolTip(m_captions.text(Text::TipGuide));
    cmdOK->setText(m_captions.text(Caption::Ok));
}

void frmAbout::applyIcons()
{
    Pic->setIcon(themedIcon(QStringLiteral("tags"), palette()));
    Picture1->setIcon(themedIcon(QStringLiteral("disc-3"), palette()));
}

void frmAbout::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && cmdOK != nullptr)
        applyIcons();
}

} // namespace ravlin
