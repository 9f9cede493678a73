"""The program in the languages that it speaks, as the environment asks for them."""

import audio
import case

setUpModule = case.start_desktop


class Language(case.SoundCase):
    """One language. The real files of that language, the real window, a sound server."""

    environment = {"LANG": "en_GB.UTF-8"}
    menus = ["File", "Edit", "Process", "Play", "View", "Help"]
    items = ["Open…", "Revert", "Resample…", "About ZEMO"]
    play, stop_title = "Play", "Stop"
    alert, refusal = "ZEMO: Error:", "ZEMO CAN'T READ THE FILE:\nother.caf"
    reason = "other.caf is at 44100 Hz, the output at 48000 Hz. Import Audio… converts it."
    panel_title, panel_button = "Open", "Cancel"
    sheet, slopes, done = "HD…", "0.6 to 0.998", "Done"
    slope, used = "0.995", "0.6"  # the bound for 0: a comma is no decimal sign here

    def names(self, role):
        return [control.name for control in self.window._root.descendants()
                if control.role == role]

    def test_the_menus_speak_it(self):
        self.launch(environment=self.environment)
        items = self.names("menu item")
        self.assertTrue(set(self.menus) <= set(items), items)
        self.assertTrue(set(self.items) <= set(items), items)

    def test_a_refused_file_is_explained_in_it(self):
        path = audio.write_caf(self.path("other.caf"), 44100, audio.noise(4410, seed=1))
        self.launch(path, environment=self.environment)
        alert = self.window.alert(self.alert)
        self.assertIn(self.refusal, self.names("label"))
        self.window.find("push button", "OK", alert).press()
        self.window.wait_for_label(self.reason)

    def test_the_play_button_changes_its_title_in_it(self):
        path = audio.write_caf(self.path("noise.caf"), self.rate, self.noise(30))
        self.launch(path, environment=self.environment)
        self.window.wait_for_label("noise.caf")
        self.window.button(self.play).press()
        self.window.button(self.stop_title).press()
        self.window.button(self.play)

    def test_the_standard_buttons_speak_it(self):
        self.launch(environment=self.environment)
        self.window.choose(self.items[0])
        panel = self.window.dialog(self.panel_title)
        self.window.find("push button", self.panel_button, panel)

    def test_a_sheet_has_its_decimal_sign(self):
        path = audio.write_caf(self.path("noise.caf"), self.rate, self.noise(0.1))
        self.launch(path, environment=self.environment)
        self.window.wait_for_label("noise.caf")
        self.window.choose(self.sheet)
        sheet = self.window.dialog("HD")
        self.window.find("label", self.slopes, sheet)
        fields = [control for control in sheet.descendants() if control.role == "text"]
        next(field for field in fields if field.text() == self.slope).write("0,7")
        next(c for c in sheet.descendants() if c.name == "OK" and c.role != "label").press()
        self.window.wait_until_closed("HD")
        self.window.wait_for_label(self.done)
        self.window.choose(self.sheet)
        sheet = self.window.dialog("HD")
        self.assertIn(self.used, [c.text() for c in sheet.descendants() if c.role == "text"])

    def test_what_is_traced_stays_english(self):
        self.launch(environment=self.environment)
        self.wait_for_log("Version Minor = ")


class German(Language):
    environment = {"LANG": "de_DE.UTF-8"}
    menus = ["Datei", "Bearbeiten", "Verarbeiten", "Wiedergabe", "Ansicht", "Hilfe"]
    items = ["Öffnen\u00a0…", "Rückgängig", "Resampling\u00a0…", "Über ZEMO"]
    play, stop_title = "Wiedergabe", "Stopp"
    alert, refusal = "ZEMO: Fehler:", "ZEMO KANN DIE DATEI NICHT LESEN:\nother.caf"
    reason = ("other.caf hat 44100\u00a0Hz, die Ausgabe 48000\u00a0Hz. "
              "„Audio importieren\u00a0…“ wandelt die Datei um.")
    panel_title, panel_button = "Öffnen", "Abbrechen"
    sheet, slopes, done = "HD\u00a0…", "0,6 bis 0,998", "Fertig"
    slope, used = "0,995", "0,7"


class French(Language):
    environment = {"LANGUAGE": "fr"}  # beside LANG=C.UTF-8
    menus = ["Fichier", "Édition", "Traitement", "Lecture", "Affichage", "Aide"]
    items = ["Ouvrir…", "Revenir en arrière", "Rééchantillonner…", "À propos de ZEMO"]
    play, stop_title = "Lecture", "Arrêt"
    alert = "ZEMO\u00a0: Erreur\u00a0:"
    refusal = "ZEMO NE PEUT PAS LIRE LE FICHIER\u00a0:\nother.caf"
    reason = ("other.caf est à 44100\u00a0Hz, la sortie à 48000\u00a0Hz. "
              "«\u00a0Importer de l’audio…\u00a0» le convertit.")
    panel_title, panel_button = "Ouvrir", "Annuler"
    sheet, slopes, done = "HD…", "de 0,6 à 0,998", "Terminé"
    slope, used = "0,995", "0,7"


class Japanese(Language):
    environment = {"LANG": "ja_JP.UTF-8"}
    menus = ["ファイル(F)", "編集(E)", "処理(R)", "再生(P)", "表示(V)", "ヘルプ(H)"]
    items = ["開く(O)…", "元に戻す(R)", "リサンプル(R)…", "ZEMO について(A)"]
    play, stop_title = "再生", "停止"
    alert, refusal = "ZEMO：エラー：", "ZEMO はファイルを読み取れません：\nother.caf"
    reason = ("other.caf は 44100 Hz、出力は 48000 Hz です。"
              "「オーディオを読み込む…」で変換できます。")
    panel_title, panel_button = "開く", "キャンセル"
    sheet, slopes, done = "HD(H)…", "0.6～0.998", "完了しました"


class WithoutServer(case.WindowCase):

    def test_the_notice_is_in_the_language(self):
        self.launch(environment={"LANG": "de_DE.UTF-8"})
        self.window.wait_for_label("Kein Audiogerät: stumme Wiedergabe")

    def test_a_language_that_zemo_does_not_speak_gives_english(self):
        self.launch(environment={"LANG": "eo.UTF-8"})
        self.window.wait_for_label("No sound yet")

    def test_whoever_prefers_english_to_german_gets_english(self):
        self.launch(environment={"LANG": "en_GB.UTF-8", "LANGUAGE": "en_GB:de"})
        self.window.wait_for_label("No sound yet")


if __name__ == "__main__":
    case.main()
