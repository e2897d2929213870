#pragma once

namespace quilloservice {

class Call;

/// Whether the request comes from a program on this machine: over loopback, with a loopback name in
/// Host, and without an Origin, which a page of another site would have.
bool IsLocalProgram(Call const& call);

}  // namespace quilloservice
