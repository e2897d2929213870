#pragma once

#include <memory>

#include "moxcore/async/Future.h"
#include "moxcore/classref/InterfaceRef.h"
#include "moxcore/utility/Guid.h"
#include "moxcore/utility/ImmutableString.h"
#include "quilloclient/QuilloEntries.h"
#include "quilloclient/QuilloLists.h"
#include "quillocommon/Export.h"

namespace quillo {

/// The signed-in user's lists, kept as the service has them. A list is asked of the service once;
/// from then on it follows the service's changes, and each time that it is another the datastore
/// posts a message at its station. It reads from the service that quillocommon::ServiceAddress
/// names, with the sign-in that quilloauth keeps (InitializeAuthManager comes first).
///
/// Futures complete on the datastore's executor, which runs one thing after the other: no list
/// changes while a continuation walks it there. Errors go to the failure listeners
/// (quillocommon/Failures.h). Any thread; nothing blocks.
class QUILLOSERVICES_API QuilloDatastore {
public:
    template <class T>
    using Result = moxcore::async::Future<moxcore::classref::InterfaceRef<T>>;
    using Guid = moxcore::utility::Guid;
    using ImmutableString = moxcore::utility::ImmutableString;

    // The messages at the station, by the names of their types. All but the first carry the ID of
    // whose list it is. They come on the executor, when the list is as it is from now on.

    struct AccountListChanged {
        static constexpr char kTypeName[] = "quillo::QuilloDatastore::AccountListChanged";
    };
    struct TeamListChanged {  ///< of an account
        static constexpr char kTypeName[] = "quillo::QuilloDatastore::TeamListChanged";
    };
    struct ProjectListChanged {  ///< of a team
        static constexpr char kTypeName[] = "quillo::QuilloDatastore::ProjectListChanged";
    };
    struct AssetListChanged {  ///< of a folder
        static constexpr char kTypeName[] = "quillo::QuilloDatastore::AssetListChanged";
    };

    /// The datastore with this ID: the null string names the default one, which is the only one
    /// there is; null for any other.
    [[nodiscard]] static std::shared_ptr<QuilloDatastore> GetDatastore(ImmutableString const& id);

    /// Puts `datastore` in the default one's place; null brings that back. For tests.
    static void SetDatastore(std::shared_ptr<QuilloDatastore> datastore);

    virtual ~QuilloDatastore();

    /// Signs in, with the token there is or interactively; one that waits for the user is begun
    /// anew. What is asked for meanwhile waits for it; without a sign-in, every request fails
    /// (quilloauth::jwt::kNotSignedIn).
    virtual void SignIn() = 0;

    /// Signs in, and asks the service who that is.
    [[nodiscard]] virtual Result<QuilloUser> GetCurrentUser() = 0;

    [[nodiscard]] virtual Result<QuilloAccountList> GetAccountList() = 0;
    [[nodiscard]] virtual Result<QuilloTeamList> GetTeamList(Guid const& accountID) = 0;
    [[nodiscard]] virtual Result<QuilloProjectList> GetProjectList(Guid const& teamID) = 0;
    [[nodiscard]] virtual Result<QuilloAssetList> GetAssetList(Guid const& folderID) = 0;

    [[nodiscard]] virtual ImmutableString GetStationID() const = 0;

    /// Ends the session that quilloauth keeps, and with it whatever else goes by it
    /// (quilloauth::jwt::ListenToSession). Waits for the disk, not for the service.
    virtual void SignOutJwt() = 0;

    /// Ends what the datastore does with the session: its token and its lists are dropped, requests
    /// under way fail, no further message is posted.
    virtual void SignOutOAuth2() = 0;
};

}  // namespace quillo
