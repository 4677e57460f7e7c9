#pragma once

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
