// SPDX-License-Identifier: GPL-3.0-or-later
// The options' stored texts: defaults where nothing or nothing known is stored, only what changed is written, and what
// a later version stored is not overwritten with less.

#include "core/app/options.h"
#include "core/app/settings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestOptions : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString path() const { return m_folder->filePath(u"ravlin.ini"_s); }
    void put(const QByteArray &content) const
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    QByteArray got() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void anEmptyTextGivesTheDefault()
    {
        QCOMPARE(textOrDefault(QString(), u"default"), u"default"_s);
        QCOMPARE(textOrDefault(u" "_s, u"default"), u" "_s);
        QCOMPARE(textOrDefault(u"text"_s, u"default"), u"text"_s);
    }

    void serverAndMailAreTheStoredOnesOrTheDefaults()
    {
        Settings settings(path());
        QCOMPARE(cdServer(settings), defaults::Server.toString());
        QCOMPARE(cdMail(settings), defaults::Mail.toString());
        settings.write(settingskey::Servidor, u"cd.example.org"_s);
        settings.write(settingskey::Correo, u"me@example.org"_s);
        QCOMPARE(cdServer(settings), u"cd.example.org"_s);
        QCOMPARE(cdMail(settings), u"me@example.org"_s);
        settings.write(settingskey::Servidor, QString());
        QCOMPARE(cdServer(settings), defaults::Server.toString());
    }

    void nothingStoredGivesTheDefaults()
    {
        const FurtherOptions options = FurtherOptions::restored(Settings(path()));
        QCOMPARE(options.newTagVersion, 3);
        QVERIFY(!options.keepFileTimes);
        QCOMPARE(options.doubleClick, DoubleClick::Open);
        QCOMPARE(options.hiddenColumns, QString());
        QVERIFY(options == FurtherOptions());
    }

    void whatIsStoredIsRestored()
    {
        const FurtherOptions options{4, true, DoubleClick::Edit, u"track year"_s};
        {
            Settings settings(path());
            options.store(settings);
            QVERIFY(settings.save());
        }
        QCOMPARE(
            got(), QByteArray("[ini]\ndouble click=edit\nhidden columns=track year\nid3v2 version=4\nkeep times=si\n"));
        QVERIFY(FurtherOptions::restored(Settings(path())) == options);
        {
            Settings settings(path());
            FurtherOptions().store(settings);
            QVERIFY(settings.save());
        }
        QVERIFY(FurtherOptions::restored(Settings(path())) == FurtherOptions());
    }

    void theDefaultsAreNotWrittenWhereNothingIsStored()
    {
        Settings settings(path());
        FurtherOptions().store(settings);
        QVERIFY(settings.save());
        QVERIFY(!QFile::exists(path()));
    }

    void whatOnlyALaterVersionKnowsStaysUntilTheUserChooses()
    {
        const QByteArray later = "[ini]\nid3v2 version=5\nkeep times=newer only\ndouble click=rate\n";
        put(later);
        Settings settings(path());
        FurtherOptions options = FurtherOptions::restored(settings);
        QVERIFY(options == FurtherOptions());
        options.store(settings);
        QVERIFY(settings.save());
        QCOMPARE(got(), later);
        options.newTagVersion = 4;
        options.store(settings);
        QVERIFY(settings.save());
        QCOMPARE(got(), QByteArray("[ini]\nid3v2 version=4\nkeep times=newer only\ndouble click=rate\n"));
    }
};

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
