#include "quilloauth/RenewalTurn.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "moxcore/utility/Descriptor.h"

namespace quilloauth {

using moxcore::utility::Descriptor;
namespace {

constexpr mode_t kOwnerOnly = 0600;

class FileTurn final : public RenewalTurn {
public:
    explicit FileTurn(std::string const& path)
        : file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly)) {}

    [[nodiscard]] bool IsSomebodyElses() const {
        return file && flock(file.GetNumber(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    }

private:
    Descriptor file;
};

}  // namespace

std::unique_ptr<RenewalTurn> RenewalTurn::TryTake(std::string const& tokenPath) {
    auto turn = std::make_unique<FileTurn>(tokenPath + ".renewing");
    if (turn->IsSomebodyElses()) return nullptr;
    return turn;
}

}  // namespace quilloauth
