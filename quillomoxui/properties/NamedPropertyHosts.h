#pragma once

#include <boost/preprocessor/seq/for_each.hpp>
#include <boost/preprocessor/tuple/elem.hpp>
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
// it needs. Besides what NotifyingPropertyHost<T, Arg> offers, the class has
//
// - `T Get<X>() const`: a copy of the value; of pointers and vectors, sharing the objects,
// - `void Set<X>(Arg)`: stores and notifies; an owner may override it with a rule of its own,
// - `void SetInitial<X>(Arg)`: stores and notifies nobody.
//
// Values compare with ==, pointers by the object that they point to, vectors element by element.

/// The one list of the properties: each type once, how its values are passed, and the names of all
/// properties of that type.
#define QUILLO_NAMED_PROPERTIES(BY_VALUE, BY_REFERENCE)                                     \
    BY_REFERENCE(moxcore::utility::Guid, (ID))                                              \
    BY_REFERENCE(UTF16String, (Name)(SelectionPath)(ActiveAssetName)(ReviewLinkURL))        \
    BY_REFERENCE(quillomoxui::FetchChildrenState, (FetchChildrenState))                     \
    BY_REFERENCE(NodeVector<QuilloFolder>, (Folders))                                       \
    BY_REFERENCE(NodeVector<QuilloFile>, (Files))                                           \
    BY_REFERENCE(NodeVector<QuilloVersionStack>, (VersionStacks))                           \
    BY_REFERENCE(NodeVector<QuilloProject>, (Projects))                                     \
    BY_REFERENCE(NodeVector<QuilloWorkspace>, (Workspaces))                                 \
    BY_REFERENCE(NodeVector<QuilloAccount>, (Accounts))                                     \
    BY_REFERENCE(std::shared_ptr<QuilloFolder>, (RootFolder)(ProposedSelection)(Selection)) \
    BY_REFERENCE(std::shared_ptr<QuilloAccount>, (ProposedAccount))                         \
    BY_REFERENCE(std::shared_ptr<QuilloUser>, (User))                                       \
    BY_REFERENCE(boost::intrusive_ptr<moxui::drawbot::ImageInterface>, (Icon))              \
    BY_REFERENCE(PictureSupplyHandler, (AssetTypeIcon))                                     \
    BY_REFERENCE(moxui::drawbot::ColorRGBA, (Color))                                        \
    BY_VALUE(ShareForReviewViewID, (CurrentViewID))                                         \
    BY_VALUE(bool, (IsLoggedIn))                                                            \
    BY_REFERENCE(quillomoxui::EncodingStatus, (EncodingStatus))                             \
    BY_VALUE(double, (EncodingProgress))                                                    \
    BY_REFERENCE(quilloauth::SignInProgress, (SignInProgress))                              \
    BY_REFERENCE(std::optional<moxcore::threads::TimePoint>, (UploadWaitingSince))

/// Expands DEFINE(X, T, Arg) for each of `names`, whose type is T.
#define QUILLO_EACH_PROPERTY(DEFINE, T, Arg, names) \
    BOOST_PP_SEQ_FOR_EACH(QUILLO_ONE_PROPERTY, (DEFINE, T, Arg), names)
#define QUILLO_ONE_PROPERTY(unused, data, X) \
    BOOST_PP_TUPLE_ELEM(0, data)             \
    (X, BOOST_PP_TUPLE_ELEM(1, data), BOOST_PP_TUPLE_ELEM(2, data))

#define QUILLO_DECLARE_PROPERTY(X, T, Arg)                                             \
    class QUILLO_API X##NotifyingPropertyHost : public NotifyingPropertyHost<T, Arg> { \
    public:                                                                            \
        ~X##NotifyingPropertyHost() override;                                          \
        [[nodiscard]] virtual T Get##X() const;                                        \
        virtual void Set##X(Arg newValue);                                             \
        virtual void SetInitial##X(Arg newValue);                                      \
    };
// The template's code for each type is in the library, once; exported by name, because a template
// of a type that is hidden elsewhere would be hidden, too.
#define QUILLO_DECLARE_TYPE(T, Arg, names)                          \
    extern template class QUILLO_API NotifyingPropertyHost<T, Arg>; \
    QUILLO_EACH_PROPERTY(QUILLO_DECLARE_PROPERTY, T, Arg, names)
#define QUILLO_DECLARE_BY_VALUE(T, names) QUILLO_DECLARE_TYPE(T, T, names)
#define QUILLO_DECLARE_BY_REFERENCE(T, names) QUILLO_DECLARE_TYPE(T, T const&, names)

QUILLO_NAMED_PROPERTIES(QUILLO_DECLARE_BY_VALUE, QUILLO_DECLARE_BY_REFERENCE)

#undef QUILLO_DECLARE_BY_VALUE
#undef QUILLO_DECLARE_BY_REFERENCE
#undef QUILLO_DECLARE_TYPE
#undef QUILLO_DECLARE_PROPERTY

}  // namespace quillomoxui
