#pragma once

// Marks what libmoxcore exports; everything else stays hidden.
#define MOXCORE_API __attribute__((visibility("default")))
