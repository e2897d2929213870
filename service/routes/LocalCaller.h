#pragma once

namespace quilloservice {

class Call;

/// Whether a program of this machine asks, knowingly: over loopback, under a loopback name, and not
/// on behalf of a page in a browser that came from elsewhere.
bool IsLocalProgram(Call const& call);

}  // namespace quilloservice
