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

/// What one pair of runs showed, by name: "ours" and "floor" in seconds or bytes, and what else explains them.
using Reading = std::map<std::string, double>;
/// Makes one pair. Throws Unmeasurable.
using Pair = std::function<Reading()>;

/// Why a figure cannot be measured here, in one line.
struct Unmeasurable : Error
{
    using Error::Error;
};

/// A row of the table for each of `sizes`. `make` prepares what all pairs of one size share; the first pair is thrown
/// away.
void AddFigure(const std::string& name, const std::vector<int64_t>& sizes, std::function<Pair(int64_t size)> make);

/// Ends the processes and windows of the last figure that was measured.
void DropFigure();

/// A pair of two ways to do the same. Each returns what it took; they take turns in going first.
Pair AlternatingPair(std::function<double()> ours, std::function<double()> floor);

/// Seconds that `work` takes; it returns false when it failed at `what`.
double Seconds(const QString& what, const std::function<bool()>& work);

/// An instrument of `modules` modules, units 1 and up of bench-board on 127.0.0.1:`port`.
TDeviceRecord BenchDevice(int modules, quint16 port);
/// An empty folder of this name for a figure's files, below the working folder.
QDir EmptyFolder(const QString& name);
/// Lets the disk finish what earlier runs left to it.
void SettleDisk();

void AddArchiveFigure();
void AddCopyFigure();
void AddProgramFigures();
void AddTransferFigures();
