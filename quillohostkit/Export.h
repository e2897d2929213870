#pragma once

// Marks what libquillohostkit exports; everything else stays hidden.
#define QUILLOHOSTKIT_API __attribute__((visibility("default")))
