#pragma once

namespace analysis {

// Share of calls (0..1) that find all `lines` busy, where `erlang` hours of calls come in an hour (Erlang B).
[[nodiscard]] double erlangLoss(double erlang, int lines);

// The least number of lines whose loss at that traffic is at most `loss` (above 0). No traffic needs no line.
[[nodiscard]] int linesForLoss(double erlang, double loss);

}  // namespace analysis
