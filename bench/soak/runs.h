#pragma once

#include <cstdint>

namespace soak {

// Each run prints its figures and returns true when everything was as it must be.

struct LoadPlan {
  std::int64_t records = 200'000;  // live
  int senders = 4;
  int importEvery = 60;  // seconds; a file is left as often
  int recordsPerFile = 2'000;
  int services = 0;  // that the senders share; 0: two on a server, one on files, where there can be no more
  int readers = 1;
};
// Live calls from several senders, files to import and listings at the same time.
bool runLoad(const LoadPlan& plan);

// Kills the service in the middle of that, again and again.
bool runKills(int rounds);

// Second copy, read-only folder, full disk, locked database, lost monitor folder.
bool runFaults();

// What can befall a server, on a private one: it is restarted, crashes, loses a connection's process; the network is
// cut and our service killed meanwhile; its disk is full. Each `rounds` times, with live calls and files under way,
// which are all stored once in the end, and without a hand at our service. `skipped` when there is no PostgreSQL.
bool runServerFaults(int rounds, bool& skipped);

// Import, live latency, repricing and retention with so many calls stored.
bool runSize(std::int64_t calls);

// Kills the capture program again and again while an exchange writes to a file that is rotated and sends over TCP, and
// the service imports: every line of the file must be stored once, none of the others twice.
bool runCaptureKills(int rounds);

// From a line on the wire to a stored, priced call, with the service running.
bool runCaptureLatency(int calls);

// So many lines of four exchanges, `rate` a second together, with the memory that the capture program has meanwhile.
// Their files are taken away and counted, not imported.
bool runCaptureDay(int lines, int rate);

}  // namespace soak
