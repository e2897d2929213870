#pragma once

// Marks what the library exports to its host; everything else stays hidden.
#define QUILLO_API __attribute__((visibility("default")))
