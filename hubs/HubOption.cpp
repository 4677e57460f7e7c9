#include "hubs/HubOption.h"

#include "core/IniUtility.h"
#include "core/Options.h"
#include "hubs/DeviceClocks.h"
#include "platform/LeadingNumber.h"

#include <algorithm>
#include <limits>

HubOption::HubOption(DeviceClocks& devices, Options& options, IniUtility& ini)
    : m_devices(devices)
    , m_options(options)
    , m_ini(ini) {}

QCoro::Task<Outcome> HubOption::Apply(QString typed) {
    constexpr qint16 Fewest = 1;
    constexpr qint16 Most = 10;
    using Limits = std::numeric_limits<qint16>;
    m_options.FromToval =
        static_cast<qint16>(std::clamp<qint32>(number::TypedNumber(typed), Limits::min(), Limits::max()));
    if (m_options.FromToval < Fewest || m_options.FromToval > Most)
        co_return Outcome::Refused(QStringLiteral("Valid value is 1..10"));
    const QStringList silent = co_await m_devices.SetHubOption(m_options.FromToval);
    if (m_devices.IsStopped())
        co_return Outcome::Cancelled();
    if (!silent.isEmpty())
        co_return Outcome::Silent(silent, QStringLiteral("Error on setting config to HUB(s)."));
    if (!m_ini.WriteIni(QStringLiteral("options"), QStringLiteral("FromToval"), QString::number(m_options.FromToval)))
        co_return Outcome::Failed(
            QStringLiteral("The hubs have the option, but the settings could not be written to %1.")
                .arg(m_ini.IniPath));
    co_return Outcome::Done(BoxKind::Information, QStringLiteral("Set config to all HUBs OK."));
}
