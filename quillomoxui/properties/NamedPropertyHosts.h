#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "moxcore/threads/Clock.h"
#include "moxcore/utility/Guid.h"
#include "moxui/drawbot/ColorRGBA.h"
#include "moxui/drawbot/ImageInterface.h"
#include "moxui/ui/ConstMessage.h"
#include "quilloauth/SignInProgress.h"
#include "quillomoxui/Export.h"
#include "quillomoxui/properties/EncodingStatus.h"
#include "quillomoxui/properties/FetchChildrenState.h"
#include "quillomoxui/properties/NotifyingPropertyHost.h"
#include "quillomoxui/properties/ShareForReviewViewID.h"
#include "quillomoxui/properties/UTF16String.h"

namespace quillomoxui {

// Marked here already: the code of a property is exported only where the code of its type is.
class QUILLO_API QuilloAccount;
class QUILLO_API QuilloFile;
class QUILLO_API QuilloFolder;
class QUILLO_API QuilloProject;
class QUILLO_API QuilloUser;
class QUILLO_API QuilloVersionStack;
class QUILLO_API QuilloWorkspace;

/// Fills a picture message of the toolkit; shared by all views that show the picture.
using PictureSupplyHandler = std::shared_ptr<std::function<void(moxui::ui::ConstMessage*)>>;

template <class Node>
using NodeVector = std::vector<std::shared_ptr<Node>>;

// Each property of a node or of the view model is a class of its own, <X>NotifyingPropertyHost, so
// that an object is made by inheriting the properties it has, and a view can be given just the one
// it needs. It has
//     T    Get<X>() const           a copy of the value (of pointers and vectors: sharing the
//     objects) void Set<X>(Arg)              stores and notifies; an owner may override it with a
//     rule of its own void SetInitial<X>(Arg)       stores and tells nobody
// besides what NotifyingPropertyHost<T, Arg> offers. Values compare with ==, pointers by the object
// that they point to, vectors element by element.
#define QUILLO_NAMED_PROPERTY(X, T, Arg)                                               \
    class QUILLO_API X##NotifyingPropertyHost : public NotifyingPropertyHost<T, Arg> { \
    public:                                                                            \
        ~X##NotifyingPropertyHost() override;                                          \
        [[nodiscard]] virtual T Get##X() const;                                        \
        virtual void Set##X(Arg newValue);                                             \
        virtual void SetInitial##X(Arg newValue);                                      \
    };
#define QUILLO_NAMED_PROPERTY_BY_VALUE(X, T) QUILLO_NAMED_PROPERTY(X, T, T)
#define QUILLO_NAMED_PROPERTY_BY_REFERENCE(X, T) QUILLO_NAMED_PROPERTY(X, T, T const&)

#define QUILLO_NAMED_PROPERTIES(BY_VALUE, BY_REFERENCE)                      \
    /* of every node */                                                      \
    BY_REFERENCE(ID, moxcore::utility::Guid)                                 \
    BY_REFERENCE(Name, UTF16String)                                          \
    BY_REFERENCE(FetchChildrenState, quillomoxui::FetchChildrenState)        \
    /* of a folder */                                                        \
    BY_REFERENCE(Folders, NodeVector<QuilloFolder>)                          \
    BY_REFERENCE(Files, NodeVector<QuilloFile>)                              \
    BY_REFERENCE(VersionStacks, NodeVector<QuilloVersionStack>)              \
    /* of a project, a workspace, an account, the user */                    \
    BY_REFERENCE(RootFolder, std::shared_ptr<QuilloFolder>)                  \
    BY_REFERENCE(Projects, NodeVector<QuilloProject>)                        \
    BY_REFERENCE(Workspaces, NodeVector<QuilloWorkspace>)                    \
    BY_REFERENCE(Accounts, NodeVector<QuilloAccount>)                        \
    /* of the user and an account */                                         \
    BY_REFERENCE(Icon, boost::intrusive_ptr<moxui::drawbot::ImageInterface>) \
    /* of the user */                                                        \
    BY_REFERENCE(Color, moxui::drawbot::ColorRGBA)                           \
    BY_REFERENCE(ProposedAccount, std::shared_ptr<QuilloAccount>)            \
    BY_REFERENCE(ProposedSelection, std::shared_ptr<QuilloFolder>)           \
    BY_REFERENCE(SelectionPath, UTF16String)                                 \
    BY_REFERENCE(Selection, std::shared_ptr<QuilloFolder>)                   \
    /* of the view model */                                                  \
    BY_REFERENCE(User, std::shared_ptr<QuilloUser>)                          \
    BY_VALUE(CurrentViewID, ShareForReviewViewID)                            \
    BY_REFERENCE(ActiveAssetName, UTF16String)                               \
    BY_REFERENCE(ReviewLinkURL, UTF16String)                                 \
    BY_VALUE(IsLoggedIn, bool)                                               \
    BY_REFERENCE(EncodingStatus, quillomoxui::EncodingStatus)                \
    BY_VALUE(EncodingProgress, double)                                       \
    BY_REFERENCE(AssetTypeIcon, PictureSupplyHandler)                        \
    BY_REFERENCE(SignInProgress, quilloauth::SignInProgress)                 \
    BY_REFERENCE(UploadWaitingSince, std::optional<moxcore::threads::TimePoint>)

// The template's code for each of these types is in the library, once; exported by name, because a
// template of a type that is hidden elsewhere would be hidden, too.
#define QUILLO_PROPERTY_TYPES(BY_VALUE, BY_REFERENCE)                  \
    BY_REFERENCE(moxcore::utility::Guid)                               \
    BY_REFERENCE(UTF16String)                                          \
    BY_REFERENCE(FetchChildrenState)                                   \
    BY_REFERENCE(NodeVector<QuilloFolder>)                             \
    BY_REFERENCE(NodeVector<QuilloFile>)                               \
    BY_REFERENCE(NodeVector<QuilloVersionStack>)                       \
    BY_REFERENCE(NodeVector<QuilloProject>)                            \
    BY_REFERENCE(NodeVector<QuilloWorkspace>)                          \
    BY_REFERENCE(NodeVector<QuilloAccount>)                            \
    BY_REFERENCE(std::shared_ptr<QuilloFolder>)                        \
    BY_REFERENCE(std::shared_ptr<QuilloAccount>)                       \
    BY_REFERENCE(std::shared_ptr<QuilloUser>)                          \
    BY_REFERENCE(boost::intrusive_ptr<moxui::drawbot::ImageInterface>) \
    BY_REFERENCE(PictureSupplyHandler)                                 \
    BY_REFERENCE(moxui::drawbot::ColorRGBA)                            \
    BY_VALUE(ShareForReviewViewID)                                     \
    BY_VALUE(bool)                                                     \
    BY_REFERENCE(EncodingStatus)                                       \
    BY_VALUE(double)                                                   \
    BY_REFERENCE(quilloauth::SignInProgress)                           \
    BY_REFERENCE(std::optional<moxcore::threads::TimePoint>)

#define QUILLO_EXTERN_BY_VALUE(T) extern template class QUILLO_API NotifyingPropertyHost<T, T>;
#define QUILLO_EXTERN_BY_REFERENCE(T) \
    extern template class QUILLO_API NotifyingPropertyHost<T, T const&>;
QUILLO_PROPERTY_TYPES(QUILLO_EXTERN_BY_VALUE, QUILLO_EXTERN_BY_REFERENCE)
QUILLO_NAMED_PROPERTIES(QUILLO_NAMED_PROPERTY_BY_VALUE, QUILLO_NAMED_PROPERTY_BY_REFERENCE)
#undef QUILLO_EXTERN_BY_VALUE
#undef QUILLO_EXTERN_BY_REFERENCE
#undef QUILLO_NAMED_PROPERTY_BY_VALUE
#undef QUILLO_NAMED_PROPERTY_BY_REFERENCE
#undef QUILLO_NAMED_PROPERTY

}  // namespace quillomoxui
