#pragma once

#include <string>

namespace quilloservice {

class Store;

/// How much a new store is filled with.
enum class SampleSize { None, Small, Large };

/// The user whom a service that trusts the local user signs in.
std::string SampleUserId();

/// With what every sample user signs in in the browser.
inline constexpr char const* kSamplePassword = "review";

/// Fills an empty store, in one transaction; does nothing to one that has a user. The same IDs and
/// names every time.
void MakeSampleData(Store& store, SampleSize size);

}  // namespace quilloservice
