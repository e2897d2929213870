"""Choosing a location: in the popup, and in the dialog on its own."""

import json
import os

from programs import ACCOUNT, RIVER, Running, call, names_in
from window import WindowTest

OTHER_ACCOUNT = "Harbour Street Studio"


class LocationTests(WindowTest):

    def service(self, *arguments, trusting=True):
        """One that does not make those wait who read all there is again and again."""
        return super().service("--limit", "10000/1", *arguments, trusting=trusting)

    def find_place(self, path, service):
        """The place, with all below it, as the service has it."""
        out, _ = self.host("locations", "--json", "--depth", "8", service=service)
        place = json.loads(out)
        for name in path.split("/"):
            place = next(child for child in place["children"] if child["name"] == name)
        return place

    def choose_account(self, window, name):
        window.click("ComboBox", "Account")
        window.click("ListItem", name)
        window.see_gone("ListItem", OTHER_ACCOUNT if name == ACCOUNT else ACCOUNT)

    def open_dialog(self, service, *arguments):
        window = self.window("choose-location", *arguments, service=service)
        self.choose_account(window, ACCOUNT)
        return window

    def test_the_dialog_has_one_outcome_whichever_way_it_ends(self):
        service = self.service()
        wanted = self.find_place(f"{RIVER}/Editorial", service)

        def choose(window):
            window.click("ListItem", "The Long River")
            window.click("TreeItem", "Editorial")
            window.click("Button", "Choose")

        def choose_by_keyboard(window):
            window.go_to("ListItem", "*")
            window.press("ListItem", "The Long River", "Down")
            window.go_to("TreeItem", "*")
            window.press("TreeItem", "Editorial", "Down")

        def cancel(window):
            window.click("ListItem", "The Long River")
            window.click("TreeItem", "Editorial")
            window.click("Button", "Cancel")

        as_text = f"{RIVER}/Editorial\n{wanted['id']}\n"
        as_json = json.dumps({"folder_id": wanted["id"], "folder_path": f"{RIVER}/Editorial"},
                             indent=2) + "\n"
        for way, arguments, code, expected in (
                (choose, ["--json"], 0, as_json),
                (choose, ["--backend", "client"], 0, as_text),
                (choose_by_keyboard, [], 0, as_text),
                (cancel, [], 8, ""),
                (lambda window: window.key("Escape"), [], 8, ""),
                (lambda window: window.close_box(), [], 8, ""),
                (lambda window: window.process.terminate(), [], 130, "")):
            window = self.open_dialog(service, *arguments)
            way(window)
            ended, out, err = window.finish()
            self.assertEqual((ended, out), (code, expected), err)
            self.assertEqual("No location was chosen." in err, code == 8, err)

    def test_the_folder_chosen_last_is_where_the_movie_lands(self):
        service = self.service()
        window = self.window(self.clip, service=service)
        self.go_to_folders_by_keyboard(window)
        window.press("TreeItem", "VFX", "Down")
        window.see("Link", "Feature Films/The Long River/VFX")

        # What is proposed in another account is forgotten by Cancel.
        window.click("Link", "Feature Films/The Long River/VFX")
        window.click("Button", "The Long River, Feature Films")
        self.choose_account(window, OTHER_ACCOUNT)
        window.click("ListItem", "Lighthouse Keepers")
        window.click("TreeItem", "Interviews")
        window.click("Button", "Cancel")

        window.click("Link", "Feature Films/The Long River/VFX")
        window.click("TreeItem", "Deliverables")
        window.click("Button", "Choose")
        window.see("Link", "Feature Films/The Long River/Deliverables")
        window.click("Button", "Share")
        window.hear("is shared as version 1")
        self.assertIn("Clip.mp4", names_in(self.find_place(f"{RIVER}/Deliverables", service)))
        window.see("Button", "Copy link")
        window.dismiss("Button", "Copy link")
        self.close(window)

    def test_what_is_chosen_follows_the_changes_of_the_service(self):
        service = self.service()
        workspace = self.find_place(f"{ACCOUNT}/Commercials", service)
        window = self.window(self.clip, service=service)
        window.see("Button", "Share for Review")
        # The command has kept its session, which is of the other library.
        window.click("Button", "Share for Review")
        window.see("Link", "Select Quillo Location...")
        window.dismiss("Link", "Select Quillo Location...")
        window.click("MenuItem", "Share")
        window.click("MenuItem", "Sign Out")
        window.activate()
        window.click("MenuItem", "Developer")
        window.click("MenuItem", "Talk to the Service Through the SDK")
        window.click("Button", "Share for Review")
        self.sign_in(window)
        window.click("Link", "Select Quillo Location...")
        self.choose_account(window, ACCOUNT)
        window.click("ListItem", "Coffee Roasters 30s")
        window.click("TreeItem", "Client feedback")
        window.click("Button", "Choose")
        window.see("Link", "Commercials/Coffee Roasters 30s/Client feedback")
        call(service, "PATCH", f"/v1/workspaces/{workspace['id']}", {"name": "Adverts"})
        window.see("Link", "Adverts/Coffee Roasters 30s/Client feedback")

        # A folder that is gone leaves the choice to the user.
        folder = self.find_place(f"{ACCOUNT}/Adverts/Coffee Roasters 30s/Client feedback", service)
        call(service, "DELETE", f"/v1/folders/{folder['id']}")
        window.click("Link", "The folder is gone, select another...")
        window.click("ListItem", "The Long River")
        window.click("TreeItem", "VFX")
        window.click("Button", "Choose")
        window.see("Link", "Feature Films/The Long River/VFX")
        window.click("Button", "Share")
        window.hear("is shared as version 1")
        self.assertIn("Clip.mp4", names_in(self.find_place(f"{RIVER}/VFX", service)))
        window.see("Button", "Copy link")
        window.dismiss("Button", "Copy link")
        self.close(window)

    def test_movies_that_were_never_shared_go_to_the_default_destination(self):
        service = self.service()
        window = self.window(self.clip, service=service)
        window.see("Button", "Share for Review")
        window.activate()
        window.key("ctrl+comma")
        window.see("StaticText", "Default destination: None")
        window.click("Button", "Choose the Default Destination")
        self.choose_account(window, OTHER_ACCOUNT)
        window.click("ListItem", "Lighthouse Keepers")
        window.click("TreeItem", "Interviews")
        window.click("Button", "Choose")
        path = f"{OTHER_ACCOUNT}/Documentaries/Lighthouse Keepers/Interviews"
        window.see("StaticText", f"Default destination: {path}")
        window.click("Button", "Close")
        window.see_gone("Button", "Close")
        window.click("Button", "Share for Review")
        window.see("Link", "Documentaries/Lighthouse Keepers/Interviews")
        window.click("Button", "Share")
        window.hear("is shared as version 1")
        self.assertIn("Clip.mp4", names_in(self.find_place(path, service)))
        window.see("Button", "Copy link")
        window.dismiss("Button", "Copy link")
        self.close(window)

        # It is kept, until it is cleared.
        window = self.window(service=service)
        window.see("Button", "Open the Sample Clip")
        window.activate()
        window.key("ctrl+comma")
        window.see("StaticText", f"Default destination: {path}")
        window.click("Button", "Clear the Default Destination")
        window.see("StaticText", "Default destination: None")
        window.click("Button", "Close")
        window.see_gone("Button", "Close")
        window.activate()
        self.close(window)

    def test_the_dialog_without_a_display(self):
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        host = Running("quillo-host", "choose-location", "--data", self.state,
                       environment=environment)
        code, out, err = host.finish()
        self.assertEqual((code, out), (1, ""))
        self.assertIn("there is no display", err)
