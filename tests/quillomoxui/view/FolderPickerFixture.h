#pragma once

#include "tests/quillomoxui/view/PickerTest.h"

namespace quillomoxui::view {

class FolderPickerFixture : public PickerTest {
protected:
    FolderPickerFixture() : root(spring->GetRootFolder()) {
        model->SetAssetDataMethods([](auto&, auto&) { return true; },
                                   [](auto&&...) { return false; }, [](auto&&...) { return true; });
    }

    static int Fetches(std::shared_ptr<QuilloFolder> const& folder) {
        return std::dynamic_pointer_cast<CountingFolder>(folder)->fetches;
    }
    /// The project Spring with the folders A, which has C, which has D, and B.
    void ReceiveTree() {
        auto const top = Receive(root, {"B", "A"});
        Receive(top[0], {});
        c = Receive(top[1], {"C"}).front();
        d = Receive(c, {"D"}).front();
        Receive(d, {});
    }
    void PressKeys(std::vector<Qt::Key> const& keys) {
        for (auto const key : keys)
            QTest::keyClick(&Tree(), key);
        RunEvents();
    }
    std::string Proposed() {
        auto const folder = user->GetProposedSelection();
        return folder ? moxcore::string::UTF16to8(folder->GetName()) : "none";
    }

    std::shared_ptr<QuilloFolder> root;
    std::shared_ptr<QuilloFolder> c, d;
};

}  // namespace quillomoxui::view
