#pragma once

// Marks what libquilloservices exports; everything else stays hidden.
#define QUILLOSERVICES_API __attribute__((visibility("default")))
