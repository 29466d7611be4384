#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/mainwindow.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>

#include <functional>

using namespace WindowFixture;

// A new user sets everything through the window's own dialogs, and it all
// comes back after a restart.
class TestMainWindowDialogs final : public WindowTest
{
    Q_OBJECT

private:
    // Opens the dialog behind the menu entry, lets fill() set its fields, accepts it.
    template <typename Dialog>
    static bool runDialog(MainWindow &w, const QString &entry, const std::function<void(Dialog &)> &fill)
    {
        bool seen = false;
        QTimer::singleShot(0, &w, [&] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            seen = true;
            fill(*dialog);
            dialog->accept();
        });
        for (QAction *action : w.menuBar()->findChildren<QAction *>()) {
            if (action->text() == entry)
                action->trigger();
        }
        return seen;
    }

    template <typename Widget>
    static Widget *field(QWidget &dialog, const char *objectName)
    {
        return dialog.findChild<Widget *>(QLatin1String(objectName));
    }

private slots:
    void everyValueSurvivesARestart()
    {
        {
            MainWindow w(services());
            QVERIFY(runDialog<PreferencesDialog>(w, QStringLiteral("&Preferences..."), [](QWidget &d) {
                field<QLineEdit>(d, "callsignEdit")->setText(QStringLiteral("w4abc"));
                field<QCheckBox>(d, "locationCheck")->setChecked(true);
                field<QDoubleSpinBox>(d, "latitudeSpin")->setValue(35.5);
                field<QDoubleSpinBox>(d, "longitudeSpin")->setValue(-82.25);
            }));
            QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: W4ABC"));
            QVERIFY(!table(w)->isColumnHidden(StationModel::DistanceColumn));

            QVERIFY(runDialog<RadioSetupDialog>(w, QStringLiteral("Radio &Setup..."), [](QWidget &d) {
                auto *model = field<QComboBox>(d, "rigModelCombo");
                model->setCurrentIndex(model->findData(2));
                field<QComboBox>(d, "rigPortCombo")->setEditText(QStringLiteral("127.0.0.1:4599"));
            }));
            QVERIFY(runDialog<DxClustersDialog>(w, QStringLiteral("DX &Cluster Setup..."), [](QWidget &d) {
                field<QLineEdit>(d, "dxClusterHostEdit")->setText(QStringLiteral("dx.example.org"));
                field<QSpinBox>(d, "dxClusterPortSpin")->setValue(7300);
                for (QPushButton *button : d.findChildren<QPushButton *>()) {
                    if (button->text() == QLatin1String("Add"))
                        button->click();
                }
            }));
            QVERIFY(runDialog<LwBridgeDialog>(w, QStringLiteral("Lampwick &Bridge..."), [](QWidget &d) {
                field<QCheckBox>(d, "lwEnabledCheck")->setChecked(true);
                field<QSpinBox>(d, "lwPortSpin")->setValue(2110);
            }));
        }

        MainWindow again(services());
        QCOMPARE(labelText(again, "callsignLabel"), QStringLiteral("DE: W4ABC"));
        QVERIFY(!table(again)->isColumnHidden(StationModel::DistanceColumn));
        const QJsonObject s = readSettings();
        QCOMPARE(s.value(QStringLiteral("latitude")).toDouble(), 35.5);
        QCOMPARE(s.value(QStringLiteral("longitude")).toDouble(), -82.25);
        const QJsonObject rig = s.value(QStringLiteral("hamlib")).toObject();
        QCOMPARE(rig.value(QStringLiteral("rigModel")).toInt(), 2);
        QCOMPARE(rig.value(QStringLiteral("port")).toString(), QStringLiteral("127.0.0.1:4599"));
        const QJsonArray clusters = s.value(QStringLiteral("dxClusters")).toArray();
        QCOMPARE(clusters.last().toObject().value(QStringLiteral("host")).toString(),
                 QStringLiteral("dx.example.org"));
        QCOMPARE(clusters.last().toObject().value(QStringLiteral("port")).toInt(), 7300);
        QCOMPARE(s.value(QStringLiteral("lwEnabled")).toBool(), true);
        QCOMPARE(s.value(QStringLiteral("lwPort")).toInt(), 2110);
    }
};

TALLIS_TEST_MAIN(TestMainWindowDialogs)
#include "tst_mainwindowdialogs.moc"
