#pragma once
// Resource ids of the executable; other code refers to them by these names.
#define IDI_KORVANE_APP 123
#define IDB_KORVANE_BACKGROUND 124
