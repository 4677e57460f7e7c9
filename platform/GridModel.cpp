#include "platform/GridModel.h"

GridColumn GridColumn::YesNo(const QString& caption, const QString& field) {
    return {.caption = caption, .field = field, .values = {{1, QStringLiteral("Yes")}, {0, QStringLiteral("No")}}};
}
