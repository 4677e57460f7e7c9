#include "widgets/frmSysTray.h"

#include "tests/support/KeptShell.h"

#include <gtest/gtest.h>

namespace {

struct Tray {
    explicit Tray(bool balloons = true) {
        auto owned = std::make_unique<KeptShell>(Told, balloons);
        Shell = owned.get();
        Icon = std::make_unique<frmSysTray>(std::move(owned), QStringLiteral("first"));
        Told.clear();
    }

    QString Menu() {
        Icon->ShowMenu();
        return Told.takeLast();
    }

    QStringList Told;
    KeptShell* Shell = nullptr;
    std::unique_ptr<frmSysTray> Icon;
};

} // namespace

TEST(SysTrayTest, TextsAreCutAndWhatIsShownIsNotSentAgain) {
    Tray tray;
    tray.Icon->SetToolTip(QStringLiteral("first"));
    tray.Icon->SetToolTip(QString(200, u'x'));
    EXPECT_EQ(tray.Icon->ToolTip(), QString(127, u'x'));
    QPixmap picture(4, 4);
    picture.fill(Qt::red);
    const QIcon icon(picture);
    tray.Icon->SetIconHandle(icon);
    tray.Icon->SetIconHandle(icon);
    tray.Icon->ShowBalloonTip(QString(300, u'm'), QString(90, u't'), 1, 30000);
    EXPECT_EQ(tray.Told, (QStringList{u"tip 127"_qs, u"icon"_qs, u"balloon 255 63 1 30000"_qs}));

    Tray silent(false);
    silent.Icon->ShowBalloonTip(QStringLiteral("m"), QStringLiteral("t"), 1, 30000);
    EXPECT_EQ(silent.Told, QStringList());
}

TEST(SysTrayTest, TheMenuGrowsShrinksAndKnowsItsDefault) {
    Tray tray;
    EXPECT_EQ(tray.Icon->DefaultMenuIndex(), -1);
    EXPECT_EQ(tray.Icon->AddMenuItem(QStringLiteral("Open"), QStringLiteral("open")), 0);
    EXPECT_EQ(tray.Menu(), QStringLiteral("Open")) << "no default, nothing in bold";
    EXPECT_EQ(tray.Icon->AddMenuItem(QStringLiteral("-"), QString()), 1);
    EXPECT_EQ(tray.Icon->AddMenuItem(QStringLiteral("Web"), QStringLiteral("web")), 2);
    EXPECT_EQ(tray.Icon->AddMenuItem(QStringLiteral("Exit"), QStringLiteral("close"), true), 3);
    EXPECT_EQ(tray.Menu(), QStringLiteral("Open|-|Web|*Exit"));
    for (const int outside : {-1, 4}) {
        tray.Icon->SetDefaultMenuIndex(outside);
        tray.Icon->RemoveMenuItem(outside);
        tray.Icon->EnableMenuItem(outside, false);
    }
    EXPECT_EQ(tray.Icon->DefaultMenuIndex(), 3);
    tray.Icon->SetDefaultMenuIndex(0);
    tray.Icon->RemoveMenuItem(1);
    EXPECT_EQ(tray.Menu(), QStringLiteral("*Open|Web|Exit"));
    tray.Icon->RemoveMenuItem(0);
    EXPECT_EQ(tray.Menu(), QStringLiteral("*|Web|Exit")) << "item 0 stays, without a caption";

    QStringList clicks;
    QObject::connect(tray.Icon.get(), &frmSysTray::MenuClick,
                     [&](int index, const QString& key) { clicks += QString::number(index) + key; });
    for (QAction* item : tray.Shell->Menu->actions())
        item->trigger();
    EXPECT_EQ(clicks, (QStringList{u"0open"_qs, u"1web"_qs, u"2close"_qs})) << "the keys moved with their captions";
    tray.Icon->AddMenuItem(QStringLiteral("New"), QStringLiteral("new"));
    EXPECT_EQ(tray.Menu(), QStringLiteral("*|Web|Exit|New"));
}

TEST(SysTrayTest, EachCodeOfTheShellRaisesItsEvent) {
    Tray tray;
    QStringList events;
    frmSysTray* icon = tray.Icon.get();
    QObject::connect(icon, &frmSysTray::SysTrayMouseDown, [&](int b) { events += u"down %1"_qs.arg(b); });
    QObject::connect(icon, &frmSysTray::SysTrayMouseUp, [&](int b) { events += u"up %1"_qs.arg(b); });
    QObject::connect(icon, &frmSysTray::SysTrayMouseMove, [&] { events += u"move"_qs; });
    QObject::connect(icon, &frmSysTray::SysTrayDoubleClick, [&](int b) { events += u"double %1"_qs.arg(b); });
    QObject::connect(icon, &frmSysTray::BalloonShow, [&] { events += u"show"_qs; });
    QObject::connect(icon, &frmSysTray::BalloonHide, [&] { events += u"hide"_qs; });
    QObject::connect(icon, &frmSysTray::BalloonTimeOut, [&] { events += u"time-out"_qs; });
    QObject::connect(icon, &frmSysTray::BalloonClicked, [&] { events += u"clicked"_qs; });
    for (const int code : {0x200, 0x201, 0x202, 0x203, 0x204, 0x205, 0x206, 0x207, 1026, 1027, 1028, 1029, 1030, 0})
        Q_EMIT tray.Shell->Notified(code);
    EXPECT_EQ(events, (QStringList{u"move"_qs, u"down 1"_qs, u"double 1"_qs, u"down 2"_qs, u"up 2"_qs, u"double 2"_qs,
                                   u"show"_qs, u"hide"_qs, u"time-out"_qs, u"clicked"_qs}));
}
