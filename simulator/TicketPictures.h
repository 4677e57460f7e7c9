#pragma once

#include "tickets/TicketPaper.h"

class TicketPrinter;

/// Saves what the simulated printers print as pictures. Needs a QGuiApplication.
class TicketPictures {
public:
    /// @param folder must exist.
    explicit TicketPictures(QString folder)
        : m_folder(std::move(folder)) {}

    /// Saves the last ticket of a printer as ticket-ADDRESS-NUMBER.png, the number counting its tickets from 1. A
    /// printer without a form prints the number alone.
    /// @return the file, empty if it could not be written.
    QString Save(const TicketPrinter& printer);

private:
    QString m_folder;
    TicketPaper m_paper;
};
