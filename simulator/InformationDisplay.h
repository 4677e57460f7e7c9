#pragma once

#include "simulator/SimulatedDevice.h"

/// A main display: `H` shows a text behind a four-digit number, `S` is its query.
class InformationDisplay final : public SimulatedDevice {
public:
    using SimulatedDevice::SimulatedDevice;

    /// The text behind them.
    const QByteArray& Text() const { return m_text; }

    Answer Handle(char letter, const QByteArray& data) override;
    QString Summary() const override;
    void Forget() override;

protected:
    void AddState(QJsonObject& state) const override;

private:
    QByteArray m_number;
    QByteArray m_text;
};
