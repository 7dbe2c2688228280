// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/opciones.h"

#include "core/app/programstate.h"
#include "ui/app/furtheroptions.h"
#include "ui/app/program.h"
#include "ui/app/protectionbox.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/controls/scroller.h"
#include "ui/online/mainform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include <array>
#include <limits>
#include <tuple>

namespace ravlin {

namespace {

/// The texts of the tag-save modes 1 to 5.
constexpr std::array ModeCaptions{
    Caption::SaveV1Only, Caption::SaveV2Only, Caption::SaveBoth, Caption::SaveV1RemoveV2, Caption::SaveV2RemoveV1};
constexpr int FieldLetters = 34; ///< width of the text boxes in average letters

} // namespace

opciones::opciones(Program &program, QWidget *parent) : QDialog(parent), m_program(program)
{
    setObjectName(QStringLiteral("opciones"));
    createControls();
    createLayout();
    load();
    connect(m_language, &QComboBox::activated, this, &opciones::changeLanguage);
    connect(m_checkVersion, &QPushButton::clicked, this, &opciones::openUpdate);
    connect(m_ok, &QPushButton::clicked, this, &opciones::accept);
    connect(m_cancel, &QPushButton::clicked, this, &opciones::reject);
    m_language->setFocus();
}

void opciones::createControls()
{
    m_pages = made<QTabWidget>("optionPages", this);
    m_further = new furtheroptions(m_program.captions, m_program.history, m_pages);
    m_general = made<QGroupBox>("general", this, QStringLiteral("general"));
    m_freedb = made<QGroupBox>("freedb", this, QStringLiteral("freedb"));
    m_languageLabel = made<PlainLabel>("lidioma", m_general, QStringLiteral("lenguage"));
    m_language = made<QComboBox>("cidioma", m_general);
    m_language->addItems({QStringLiteral("spanish"), QStringLiteral("english"), QStringLiteral("french")});
    m_language->setCurrentText(QStringLiteral("english"));
    m_modeLabel = made<PlainLabel>("Label1", m_general, QStringLiteral("tags"));
    m_mode = made<QComboBox>("ctags", m_general);
    m_remember = made<QCheckBox>("opreme", m_general, QStringLiteral("remember last directory"));
    m_serverLabel = made<PlainLabel>("lserver", m_freedb, QStringLiteral("freedb server"));
    m_server = made<QLineEdit>("tserver", m_freedb, defaults::Server.toString());
    m_mailLabel = made<PlainLabel>("lmail", m_freedb, QStringLiteral("email"));
    m_mail = made<QLineEdit>("tmail", m_freedb, defaults::Mail.toString());
    m_update = made<QGroupBox>("update", this, QStringLiteral("update"));
    m_checkVersion = made<QPushButton>("upd", m_update);
    m_checkVersion->setAutoDefault(false);
    m_protection = new ProtectionBox(this);
    m_ok = made<QPushButton>("ok", this, QStringLiteral("save"));
    m_ok->setDefault(true);
    m_cancel = made<QPushButton>("cancel", this, QStringLiteral("cancel"));
    m_cancel->setAutoDefault(false);

    m_languageLabel->setBuddy(m_language);
    m_modeLabel->setBuddy(m_mode);
    m_serverLabel->setBuddy(m_server);
    m_mailLabel->setBuddy(m_mail);
    guardAgainstWheel(m_language);
    guardAgainstWheel(m_mode);
    for (QLineEdit *edit : {m_server, m_mail}) {
        edit->setMaxLength(std::numeric_limits<int>::max()); // stored as typed, whatever its length
        edit->setMinimumWidth(FieldLetters * fontMetrics().averageCharWidth());
    }
}

QWidget *opciones::createFirstPage()
{
    auto *generalRows = new QFormLayout(m_general);
    generalRows->addRow(m_languageLabel, m_language);
    generalRows->addRow(m_modeLabel, m_mode);
    generalRows->addRow(m_remember);
    auto *freedbRows = new QFormLayout(m_freedb);
    freedbRows->addRow(m_serverLabel, m_server);
    freedbRows->addRow(m_mailLabel, m_mail);
    auto *updateRow = new QHBoxLayout(m_update);
    updateRow->addWidget(m_checkVersion);
    updateRow->addStretch();
    for (QFormLayout *rows : {generalRows, freedbRows})
        rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    auto *page = made<QWidget>("firstPage", m_pages);
    auto *rows = new QVBoxLayout(page);
    rows->addWidget(m_general);
    rows->addWidget(m_freedb);
    rows->addWidget(m_update);
    rows->addWidget(m_protection);
    rows->addStretch();
    return page;
}

void opciones::createLayout()
{
    m_pages->addTab(new Scroller(createFirstPage(), m_pages), QString());
    m_pages->addTab(new Scroller(m_further, m_pages), QString());
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_pages);
    rows->addLayout(buttons);
}

void opciones::load()
{
    Settings &settings = m_program.settings;
    // Another instance may have saved since. If reading fails, this one keeps what it knows.
    std::ignore = settings.reload();
    const QString code = settings.read(settingskey::Idioma);
    const QString language = code.isEmpty() ? QStringLiteral("english") : languageNameFromCode(code);
    if (!language.isEmpty())
        m_language->setCurrentText(language);
    const FurtherOptions options = FurtherOptions::restored(settings);
    m_further->show(options);
    m_protection->show(options);
    changeLanguage();
    if (const QString remembers = settings.read(settingskey::Recuerda);
        remembers == QStringLiteral("si") || remembers == QStringLiteral("no"))
        m_remember->setChecked(remembers == QStringLiteral("si"));
    if (const QString server = settings.read(settingskey::Servidor); !server.isEmpty())
        m_server->setText(server);
    if (const QString mail = settings.read(settingskey::Correo); !mail.isEmpty())
        m_mail->setText(mail);
    m_server->setCursorPosition(0);
    m_mail->setCursorPosition(0);
}

void opciones::offerToRemember()
{
    if (m_program.settings.read(settingskey::Recuerda).isEmpty())
        m_remember->setChecked(true);
}

void opciones::offerProtection()
{
    m_hasOffered = !FurtherOptions::hasProtections(m_program.settings);
    if (m_hasOffered)
        m_protection->offer();
}

void opciones::changeLanguage()
{
    speakLanguage(m_program, m_language->currentText());
    applyCaptions();
}

void opciones::applyCaptions()
{
    const Captions &captions = m_program.captions;
    setWindowTitle(captions.text(Caption::Options));
    m_serverLabel->setText(captions.text(Caption::Server));
    m_languageLabel->setText(captions.text(Caption::Language));
    m_remember->setText(captions.text(Caption::RememberLastFolder));
    m_update->setTitle(captions.text(Caption::ProgramUpdate));
    m_checkVersion->setText(captions.text(Caption::CheckForNewVersion));
    m_ok->setText(captions.text(Caption::Save));
    m_cancel->setText(captions.text(Caption::Cancel));
    for (QPushButton *button : {m_ok, m_cancel})
        makeRoomy(button);
    m_pages->setTabText(0, captions.text(Caption::Options));
    m_pages->setTabText(1, captions.text(Text::TabFurtherOptions));
    m_pages->tabBar()->setAccessibleName(captions.text(Text::NameOptionPages));
    makeEquallyWide({m_languageLabel, m_modeLabel, m_serverLabel, m_mailLabel});
    for (const PlainLabel *label : {m_languageLabel, m_modeLabel, m_serverLabel, m_mailLabel})
        label->buddy()->setAccessibleName(label->text());
    m_mode->clear();
    for (std::size_t i = 0; i < ModeCaptions.size(); ++i)
        m_mode->addItem(captions.text(ModeCaptions[i]), FirstTagSaveMode + static_cast<int>(i));
    showStoredMode();
    m_further->applyCaptions();
    m_protection->applyCaptions(captions);
    fitToScreen(this);
}

void opciones::showStoredMode()
{
    const QString stored = m_program.settings.read(settingskey::Tags);
    const std::optional<int> mode = stored.isEmpty() ? defaults::TagSaveModeShown : tagSaveModeFromText(stored);
    m_mode->setCurrentIndex(mode ? m_mode->findData(*mode) : -1);
}

void opciones::storeChoices()
{
    Settings &settings = m_program.settings;
    settings.write(settingskey::Idioma, languageCodeFromName(m_program.captions.languageName()));
    if (const QVariant mode = m_mode->currentData(); mode.isValid()) {
        settings.write(settingskey::Tags, QString::number(mode.toInt()));
        m_program.state.tagSaveMode = mode.toInt();
    }
    settings.write(settingskey::Recuerda, m_remember->isChecked() ? QStringLiteral("si") : QStringLiteral("no"));
    settings.write(settingskey::Servidor, m_server->text());
    settings.write(settingskey::Correo, m_mail->text());
    m_program.state.options = m_further->choices();
    m_protection->choose(m_program.state.options);
    m_program.state.options.store(settings);
    if (m_hasOffered)
        settings.write(settingskey::ProtectionOffered, QStringLiteral("si"));
}

void opciones::accept()
{
    storeChoices();
    if (const Result<void> saved = m_program.settings.save(); !saved)
        showSaveError(saved.error().detail);
    QDialog::accept();
}

void opciones::openUpdate()
{
    auto *window = new mainform(m_program.settings, m_program.captions, m_program.fileSystem, this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open();
}

void opciones::showSaveError(const QString &detail)
{
    MessageBox box(
        MessageBox::Critical, QString(), m_program.captions.errorText(ErrorCode::Settings), MessageBox::Ok, this);
    box.setObjectName(QStringLiteral("error"));
    box.setFurtherText(QDir::toNativeSeparators(m_program.settings.path()));
    box.setDetailedText(detail);
    box.exec();
}

} // namespace ravlin
