#pragma once

#include "simulator/SimulatedDevice.h"

/// The keypad and display of a counter: `S` time, `H` display text, `P` presence, `Q` key.
class CounterKeypad final : public SimulatedDevice {
public:
    using SimulatedDevice::SimulatedDevice;

    /// The four characters last shown, empty before the first `H`.
    const QByteArray& DisplayText() const { return m_text; }

    Answer Handle(char letter, const QByteArray& data) override;
    /// `R` and `U` set the time.
    void Hear(char letter, const QByteArray& data) override;
    QString Summary() const override;
    void Forget() override;

protected:
    void AddState(QJsonObject& state) const override;

private:
    QByteArray m_text;
};
