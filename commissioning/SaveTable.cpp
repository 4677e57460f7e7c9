#include "commissioning/SaveTable.h"

#include "commissioning/TableText.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "station/Station.h"

#include <QAbstractItemModel>
#include <QPointer>

void SaveAsCsv(Station& station, const QAbstractItemModel& model) {
    station.dialogs.ChooseSaveFile(QStringLiteral("Comma separated *.csv|*.csv"), station.ProgramFolder)
        .then([&station, table = QPointer(&model)](const QString& path) {
            if (!table || path.isEmpty())
                return;
            const Result<> written = WriteWhole(path, tabletext::Csv(*table));
            if (written)
                station.dialogs.ShowMessage(BoxKind::Information, Station::tr("Saved to %1.").arg(path));
            else
                station.dialogs.Warn(written.Error());
        });
}
