#pragma once

// Marks what the library exports to its host; everything else stays hidden.
#define QUILLO_API __attribute__((visibility("default")))

// Hides a member of a class that is exported as a whole.
#define QUILLO_HIDDEN __attribute__((visibility("hidden")))
