// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: values come back as they went in, also text that is no Unicode; a failed transaction leaves nothing; what
// is no database is told apart from what cannot be opened; the file is the user's alone.

#include "core/history/database.h"

#include "core/platform/filesystem.h"
#include "core/platform/path.h"
#include "support/filetree.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::history;
using namespace ravlin::test;

class TestDatabase : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path() const { return QDir::toNativeSeparators(m_folder->filePath(u"history.sqlite"_s)); }
    static qint64 count(Database &database)
    {
        auto statement = database.prepare("SELECT count(*) FROM t");
        if (!statement || !statement->step().value_or(false))
            qFatal("no count");
        return statement->integer(0);
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void valuesComeBack_data()
    {
        QTest::addColumn<Database::Journal>("journal");
        QTest::newRow("wal") << Database::Journal::Wal;
        QTest::newRow("rollback") << Database::Journal::Rollback;
    }
    void valuesComeBack()
    {
        QFETCH(Database::Journal, journal);
        const QString noUnicode = u"caf\xDCE9.mp3"_s;
        const QByteArray bytes("\0\xff\0", 3);
        {
            auto database = Database::open(path(), journal);
            QVERIFY(database);
            QVERIFY(database->run("CREATE TABLE t (a INTEGER, b TEXT, c BLOB, d TEXT)"));
            auto insert = database->prepare("INSERT INTO t VALUES (?, ?, ?, ?)");
            QVERIFY(insert);
            QVERIFY(insert->bind(1, Q_INT64_C(-5)).bind(2, noUnicode).bind(3, bytes).bind(4, QString()).run());
            QCOMPARE(database->lastId(), 1);
        }
        auto database = Database::open(path(), journal);
        QVERIFY(database);
        auto select = database->prepare("SELECT a, b, c, d FROM t");
        QVERIFY(select && select->step().value());
        QCOMPARE(select->integer(0), -5);
        QCOMPARE(select->text(1), noUnicode);
        QCOMPARE(select->bytes(2), bytes);
        QVERIFY(select->isNull(3));
        QVERIFY(!select->step().value());
    }

    void aFailedTransactionLeavesNothing()
    {
        auto database = Database::open(path());
        QVERIFY(database && database->run("CREATE TABLE t (a INTEGER UNIQUE)"));
        const auto done = database->transaction([&] {
            return database->run("INSERT INTO t VALUES (1)").and_then([&] {
                return database->run("INSERT INTO t VALUES (1)");
            });
        });
        QVERIFY(!done);
        QCOMPARE(count(*database), 0);
        QVERIFY(database->transaction([&] { return database->run("INSERT INTO t VALUES (1)"); }));
        QCOMPARE(count(*database), 1);
    }

    void itsVersionIsKept()
    {
        {
            auto database = Database::open(path());
            QVERIFY(database);
            QCOMPARE(database->version().value(), 0);
            QVERIFY(database->setVersion(7));
        }
        QCOMPARE(Database::open(path())->version().value(), 7);
    }

    void whatIsNoDatabaseIsDamaged()
    {
        writeFile(path(), QByteArray(5000, 'x'));
        const auto database = Database::open(path());
        QVERIFY(!database);
        QCOMPARE(database.error().code, ErrorCode::Damaged);
        QCOMPARE(contentOf(path()), QByteArray(5000, 'x'));
    }

    void aMissingFolderIsAnError()
    {
        const auto database = Database::open(platform::inFolder(path() + u".none"_s, u"history.sqlite"_s));
        QVERIFY(!database);
        QCOMPARE(database.error().code, ErrorCode::NotFound);
    }

    void theFileIsTheUsersAlone()
    {
        const auto database = Database::open(path());
        QVERIFY(database);
        const auto info = platform::FileSystem::native().info(path());
#ifndef _WIN32
        QCOMPARE(info->permissions & 07777U, 0600U);
#endif
        QVERIFY(info->isFile);
    }

    void aLinkIsNotFollowed()
    {
        const QString target = QDir::toNativeSeparators(m_folder->filePath(u"other"_s));
        writeFile(target, {});
        if (!QFile::link(target, path()) || QFileInfo(path()).suffix() == u"lnk"_s)
            QSKIP("no symbolic links here");
        QVERIFY(!Database::open(path()));
        QCOMPARE(contentOf(target), QByteArray());
    }

    void twoProgramsSeeEachOthersRows()
    {
        auto one = Database::open(path());
        auto other = Database::open(path());
        QVERIFY(one && other);
        QVERIFY(one->run("CREATE TABLE t (a INTEGER)"));
        QVERIFY(one->run("INSERT INTO t VALUES (1)"));
        QCOMPARE(count(*other), 1);
        QVERIFY(other->run("INSERT INTO t VALUES (2)"));
        QCOMPARE(count(*one), 2);
    }
};

QTEST_GUILESS_MAIN(TestDatabase)

#include "tst_database.moc"
