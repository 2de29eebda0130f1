#pragma once

#include "AppConfig.h"
#include "Error.h"

#include <QDir>
#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

constexpr int64_t KiB = 1024;
constexpr int64_t MiB = 1024 * KiB;

/// The measurements of one pair of runs by name: "ours" and "floor" (the lower bound) in seconds or bytes, and further
/// values that explain them.
using Reading = std::map<std::string, double>;
/// Runs one pair. Throws Unmeasurable.
using Pair = std::function<Reading()>;

/// Why a figure cannot be measured here, in one line.
struct Unmeasurable : Error
{
    using Error::Error;
};

/// A row of the table for each of `sizes`. `make` prepares what all pairs of one size share; the first pair is
/// discarded.
void AddFigure(const std::string& name, const std::vector<int64_t>& sizes, std::function<Pair(int64_t size)> make);

/// Ends the processes and windows of the last figure that was measured.
void DropFigure();

/// A pair of two ways to do the same. Each returns its cost in seconds or bytes; which one runs first alternates.
Pair AlternatingPair(std::function<double()> ours, std::function<double()> floor);

/// Seconds that `work` takes. Throws Unmeasurable, naming `what`, when `work` returns false.
double Seconds(const QString& what, const std::function<bool()>& work);

/// An instrument of `modules` modules, units 1 and up of bench-board on 127.0.0.1:`port`.
TDeviceRecord BenchDevice(int modules, quint16 port);
/// An empty folder of this name for a figure's files, below the working folder.
QDir EmptyFolder(const QString& name);
/// Waits until the disk has written what earlier runs left in its cache.
void SettleDisk();

void AddArchiveFigure();
void AddCopyFigure();
void AddProgramFigures();
void AddTransferFigures();
