#pragma once

#include "service/store/Ids.h"

namespace quilloservice {

class Store;

/// The amount of sample data for a new store.
enum class SampleSize { None, Small, Large };

/// The user that a service with --trust-local-user signs in.
UserId SampleUserId();

/// Every sample user's password for the sign-in in the browser.
inline constexpr char const* kSamplePassword = "review";

/// Fills an empty store in one transaction, always with the same IDs and names. Does nothing if the
/// store has a user.
void MakeSampleData(Store& store, SampleSize size);

}  // namespace quilloservice
