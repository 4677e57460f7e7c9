#include "benchmarks/Benchmarks.h"

#include "benchmarks/Report.h"
#include "operator/ComputerPicture.h"
#include "operator/ObjectMap.h"
#include "operator/ObjectPicture.h"
#include "platform/Clock.h"
#include "tests/support/OpenStation.h"
#include "widgets/WindowDialogs.h"

#include <QApplication>
#include <QTemporaryDir>

namespace {

constexpr int Passes = 400;
constexpr double AllowedTime = 0.01 * 250; ///< milliseconds a pass: 1 % of a core at four a second

} // namespace

void BenchmarkMap() {
    const QTemporaryDir folder;
    SystemClock clock;
    WindowDialogs dialogs;
    SerialControl port;
    OpenStation station({folder.path(), folder.path()}, {clock, port, dialogs});
    station.installation->NumObjects = ObjectMap::Pictures;
    for (int i = 0; i < ObjectMap::Pictures; ++i) {
        station.installation->QObjects[static_cast<std::size_t>(i)].Id = i + 1;
        station.installation->QObjects[static_cast<std::size_t>(i)].Type = static_cast<model::ObjectType>(i % 4);
    }
    ObjectMap map;
    ComputerPicture computer(&map);
    computer.setObjectName(QStringLiteral("picPC"));
    map.Use(station);
    map.show();
    QApplication::processEvents();
    const auto time = [&](const std::function<void(int)>& pass) {
        return 1000.0 / Passes * BestSeconds(3, [&] {
                   for (int i = 0; i < Passes; ++i) {
                       pass(i);
                       QApplication::processEvents();
                   }
               });
    };
    Report("Map of 36 objects, a pass of the lamps", time([&](int) { map.DrawAllObjects(); }), "ms", "1 % of a core",
           AllowedTime);
    Report("The same while every lamp changes", time([&](int pass) {
               for (int i = 0; i < ObjectMap::Pictures; ++i)
                   map.Picture(i).SetLamp(pass % 2 ? Qt::gray : Qt::red);
           }),
           "ms", "1 % of a core", AllowedTime);
}
