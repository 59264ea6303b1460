#pragma once

#include <QIcon>

namespace ui {

// The program's icons, drawn in the palette's colours at whatever size is asked for: sharp at any scale, readable on
// light and dark.
enum class Icon {
  Calls,
  Statistic,
  Clock,
  Calendar,
  Users,
  Groups,
  Log,
  LogFiltered,
  Contacts,
  Filter,
  Import,
  Report,
  Bill,
  Settings,
  Search,
  Recalc,
  Back,
  Program,
};

QIcon icon(Icon which);

}  // namespace ui
