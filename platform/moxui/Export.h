#pragma once

// Marks what libmoxui exports; everything else stays hidden.
#define MOXUI_API __attribute__((visibility("default")))
