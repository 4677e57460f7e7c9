#pragma once

#include <functional>

class Bus;

/// Transactions per second over a pseudo-terminal, beside libmodbus' RTU master with requests of the same size.
void BenchmarkTransactions();

/// Time beyond the wire that loading one printer with 64 services takes, at 9600 and 115200 bit/s, the fixed waits of
/// the load left out.
void BenchmarkPrinterLoad();

/// Loading the installation with a million ticket rows, beside the same queries without indexes.
void BenchmarkReload();

/// Opening the setup window on 64 services and 64 objects, and its refresh.
void BenchmarkGrids();

/// Compiling, rendering and sending a full ticket form, and its rich text file.
void BenchmarkForms();

/// What keeping the frames of the line for the bus monitor costs.
void BenchmarkMonitor();

/// Deleting half of two million tickets.
void BenchmarkCleanup();

/// Commissioning a hall of 26 devices in simulated time: how long, how surely on a line with faults, and whether what
/// was edited is told.
void BenchmarkCommissioning();

/// What ten years of edits take in the store, and random sequences of acts, undo and redo against copies: 1,000, or as
/// many as ORVEX_SEQUENCES in the environment says.
void BenchmarkEdits();

/// What redrawing the object map costs.
void BenchmarkMap();

/// Transactions a second over a pseudo-terminal with a device that answers at once. @param around calls its `work`
/// with whatever is to listen to the bus.
double TransactionRate(const std::function<void(Bus&, const std::function<void()>& work)>& around);
