#include "app/PanelDialog.h"
#include "app/WidgetPrompter.h"
#include "support/TempTree.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

namespace {

// Runs `act` on the modal dialog of type T once it is up.
template <typename T> void whenShown(std::function<void(T*)> act) {
    QTimer::singleShot(0, qApp, [act] {
        QTRY_VERIFY(qobject_cast<T*>(QApplication::activeModalWidget()));
        act(qobject_cast<T*>(QApplication::activeModalWidget()));
    });
}

QPushButton* buttonTitled(QMessageBox* box, const QString& title) {
    for (QAbstractButton* button : box->buttons()) {
        if (button->text() == title)
            return qobject_cast<QPushButton*>(button);
    }
    return nullptr;
}

} // namespace

class TestPrompter : public QObject {
    Q_OBJECT

private slots:
    void alertsAnswerWithTheButtonPosition_data() {
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QString>("click");
        QTest::addColumn<bool>("tick");
        QTest::addColumn<int>("response");
        QTest::newRow("no buttons: OK") << QStringList {} << "OK" << false << 1000;
        QTest::newRow("second of two") << QStringList { "Remove", "Cancel" } << "Cancel" << false << 1001;
        QTest::newRow("third, box ticked") << QStringList { "A", "B", "C" } << "C" << true << 1002;
    }
    void alertsAnswerWithTheButtonPosition() {
        QFETCH(QStringList, buttons);
        QFETCH(QString, click);
        QFETCH(bool, tick);
        QFETCH(int, response);
        WidgetPrompter prompter;
        Prompter::Alert alert;
        alert.messageText = QStringLiteral("Question");
        alert.buttons = buttons;
        alert.showsSuppressionButton = tick;
        whenShown<QMessageBox>([click, tick](QMessageBox* box) {
            if (tick)
                box->checkBox()->setChecked(true);
            buttonTitled(box, click)->click();
        });
        const Prompter::AlertAnswer answer = prompter.runAlert(alert);
        QCOMPARE(answer.response, response);
        QCOMPARE(answer.suppressed, tick);
    }

    void thePopUpRewritesTheAlert() {
        WidgetPrompter prompter;
        Prompter::Alert alert;
        alert.messageText = QStringLiteral("Move to Trash?");
        alert.popUpItems = QStringList { QStringLiteral("Move to Trash"), QStringLiteral("Permanent Delete") };
        alert.informativeText = QStringLiteral("Short.");
        alert.popUpChanged = [](Prompter::Alert& a) {
            a.messageText = a.popUpItems[a.popUpIndex] + QLatin1Char('?');
            a.informativeText = QStringLiteral("A much longer explanation that has to wrap onto a second line, and "
                                               "perhaps a third, once the box has reached its widest.");
        };
        QString shownText;
        QString shownInformative;
        bool popUpAboveButtons = false;
        bool buttonsInside = false;
        whenShown<QMessageBox>([&](QMessageBox* box) {
            auto* popUp = box->findChild<QComboBox*>();
            popUp->setCurrentIndex(1);
            shownText = box->text();
            shownInformative = box->informativeText();
            // The new, longer texts rebuild the box's layout: the pop-up must stay in it, between
            // the texts and the buttons, and the box must grow to hold everything.
            box->layout()->activate();
            const QRect buttons = box->findChild<QDialogButtonBox*>()->geometry();
            popUpAboveButtons = box->layout()->indexOf(popUp) >= 0 && popUp->geometry().bottom() < buttons.top();
            buttonsInside = buttons.bottom() < box->height();
            buttonTitled(box, QStringLiteral("OK"))->click();
        });
        const Prompter::AlertAnswer answer = prompter.runAlert(alert);
        QCOMPARE(shownText, QStringLiteral("Permanent Delete?"));
        QVERIFY(shownInformative.startsWith(QStringLiteral("A much longer")));
        QVERIFY(popUpAboveButtons);
        QVERIFY(buttonsInside);
        QCOMPARE(answer.popUpIndex, 1);
    }

    // The removal's question, asked from a sheet and answered from the keyboard: it opens over the
    // sheet, Tab reaches the pop-up, the arrows change the action and the texts with it, Return
    // answers with the first button and Escape with the last; then the sheet has the keyboard again.
    void theQuestionByKeys_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("response");
        QTest::newRow("Return: Yes") << int(Qt::Key_Return) << 1000;
        QTest::newRow("Escape: No") << int(Qt::Key_Escape) << 1001;
    }
    void theQuestionByKeys() {
        QFETCH(int, key);
        QFETCH(int, response);
        QWidget window;
        window.show();
        QDialog sheet(&window);
        sheet.setWindowModality(Qt::WindowModal);
        sheet.open();
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        WidgetPrompter prompter(&window);
        Prompter::Alert alert;
        alert.messageText = QStringLiteral("Move to Trash?");
        alert.buttons = { QStringLiteral("Yes"), QStringLiteral("No") };
        alert.popUpItems = QStringList { QStringLiteral("Move to Trash"), QStringLiteral("Permanent Delete") };
        alert.popUpChanged = [](Prompter::Alert& a) { a.messageText = a.popUpItems[a.popUpIndex] + QLatin1Char('?'); };
        QString shownText;
        bool reached = false;
        bool answeredByKey = false;
        bool overTheSheet = false;
        whenShown<QMessageBox>([&](QMessageBox* box) {
            overTheSheet = box->parentWidget() == &sheet;
            auto* popUp = box->findChild<QComboBox*>();
            if (!QTest::qWaitForWindowActive(box))
                return box->reject();
            for (int i = 0; i < 6 && QApplication::focusWidget() != popUp; ++i)
                QTest::keyClick(static_cast<QWidget*>(nullptr), Qt::Key_Tab);
            reached = QApplication::focusWidget() == popUp;
            QTest::keyClick(static_cast<QWidget*>(nullptr), Qt::Key_Down);
            shownText = box->text();
            QTest::keyClick(static_cast<QWidget*>(nullptr), Qt::Key(key));
            answeredByKey = !box->isVisible();
            if (!answeredByKey)
                box->reject();
        });
        const Prompter::AlertAnswer answer = prompter.runAlert(alert);
        QVERIFY(overTheSheet);
        QVERIFY(reached);
        QVERIFY(answeredByKey);
        QCOMPARE(shownText, QStringLiteral("Permanent Delete?"));
        QCOMPARE(answer.response, response);
        QCOMPARE(answer.popUpIndex, 1);
        QTRY_COMPARE(QApplication::activeWindow(), &sheet);
    }

    void panelsLetThroughOnlyWhatTheirDelegateEnables() {
        TempTree tree;
        const QByteArray allowed = tree.folder("allowed");
        const QByteArray refused = tree.folder("refused");
        WidgetPrompter prompter;
        Prompter::OpenPanel panel;
        panel.canChooseFiles = false;
        panel.canChooseDirectories = true;
        panel.directory = tree.root();
        panel.shouldEnable = [allowed](const QByteArray& path) { return path == allowed; };

        bool stayedOpen = false;
        whenShown<PanelDialog>([&](PanelDialog* dialog) {
            dialog->selectFile(QString::fromUtf8(refused));
            dialog->accept();
            stayedOpen = dialog->isVisible();
            dialog->selectFile(QString::fromUtf8(allowed));
            dialog->accept();
        });
        const Prompter::PanelAnswer answer = prompter.runOpenPanel(panel);
        QVERIFY(stayedOpen);
        QCOMPARE(answer.response, Prompter::OK);
        QCOMPARE(answer.urls, QList<QByteArray> { allowed });

        whenShown<PanelDialog>([](PanelDialog* dialog) { dialog->reject(); });
        QCOMPARE(prompter.runOpenPanel(panel).response, Prompter::Cancel);
    }

    void aFolderPickedInTheListIsChosenWhereFilesMayBeChosenToo() {
        TempTree tree;
        const QByteArray library = tree.folder("library");
        tree.file("library/photo.jpg", "x");
        WidgetPrompter prompter;
        Prompter::OpenPanel panel;
        panel.canChooseFiles = true;
        panel.canChooseDirectories = true;
        panel.prompt = QStringLiteral("Choose");
        panel.directory = tree.root();
        QString buttonText;
        whenShown<PanelDialog>([&](PanelDialog* dialog) {
            QAbstractItemView* view = nullptr;
            for (QAbstractItemView* candidate : dialog->findChildren<QAbstractItemView*>()) {
                if (candidate->isVisible() && candidate->objectName() == QLatin1String("treeView"))
                    view = candidate;
            }
            if (!view)
                return dialog->reject();
            // Click the folder's row, as the user does.
            (void)QTest::qWaitFor([view] { return view->model()->rowCount(view->rootIndex()) > 0; });
            const QModelIndex row = view->model()->index(0, 0, view->rootIndex());
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(row).center());
            QAbstractButton* button = dialog->findChild<QDialogButtonBox*>()->buttons().first();
            (void)QTest::qWaitFor([button] { return button->text() == QLatin1String("Choose"); }, 1000);
            buttonText = button->text();
            dialog->accept();
            if (dialog->isVisible()) // it opened the folder instead of choosing it
                dialog->reject();
        });
        const Prompter::PanelAnswer answer = prompter.runOpenPanel(panel);
        QCOMPARE(buttonText, QStringLiteral("Choose"));
        QCOMPARE(answer.response, Prompter::OK);
        QCOMPARE(answer.urls, QList<QByteArray> { library });
    }

    void severalFoldersAtOnce() {
        TempTree tree;
        const QByteArray one = tree.folder("one");
        const QByteArray two = tree.folder("two");
        WidgetPrompter prompter;
        Prompter::OpenPanel panel;
        panel.canChooseFiles = false;
        panel.canChooseDirectories = true;
        panel.allowsMultipleSelection = true;
        panel.directory = tree.root();
        whenShown<PanelDialog>([](PanelDialog* dialog) {
            dialog->selectFile(QStringLiteral("\"one\" \"two\""));
            dialog->accept();
        });
        const Prompter::PanelAnswer answer = prompter.runOpenPanel(panel);
        QCOMPARE(answer.response, Prompter::OK);
        QCOMPARE(answer.urls, (QList<QByteArray> { one, two }));
    }
};

QTEST_MAIN(TestPrompter)
#include "tst_prompter.moc"
