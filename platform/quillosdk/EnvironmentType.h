#pragma once

namespace quillosdk {

/// Which of the service's installations is meant.
enum class EnvironmentType { Production = 0 };

}  // namespace quillosdk
