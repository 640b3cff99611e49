#!/usr/bin/env python3
"""Draws every skin image of the player into a folder.

    make_skin.py OUT_DIR [--font BOLD_TTF] [--preview PREVIEW_PNG]

Every image is drawn here, from shapes and one bold font, so the skin can be
changed by editing this file. Shapes are drawn at four times the size and
scaled down, which antialiases their edges. --preview also writes a picture
of the images laid out as the screens show them, to judge the whole at a
glance.
"""

import argparse
import math
import os
import sys

from PIL import Image, ImageDraw, ImageFont

SCALE = 4
SCREEN_W, SCREEN_H = 1280, 720

# Palette: a deep blue-grey theme with the interface's highlight colour.
BG = (28, 34, 48)
BG_LOW = (23, 28, 40)
BAR = (19, 24, 34)
LINE = (48, 58, 78)
PANEL = (35, 43, 60)
RAISED = (50, 61, 84)
FIELD = (17, 21, 31)
ACCENT = (54, 255, 160)
ACCENT_DEEP = (31, 158, 104)
WHITE = (255, 255, 255)
MUTED = (150, 161, 182)
KEYCAP = (86, 99, 126)
AMBER = (255, 196, 77)
RED = (255, 92, 92)

DEFAULT_FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
PREVIEW_FONT = "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc"


def rgba(color, alpha=255):
    return tuple(color[:3]) + (alpha,)


class Canvas:
    """An image drawn at SCALE times its size in final-pixel coordinates.

    Each shape goes on its own layer and is composited, so translucent
    shapes blend with what is under them instead of replacing it.
    """

    def __init__(self, w, h, fill=(0, 0, 0, 0), scale=SCALE):
        self.w, self.h, self.s = w, h, scale
        self.img = Image.new("RGBA", (w * scale, h * scale), fill)

    def _box(self, box):
        return [round(v * self.s) for v in box]

    def _pt(self, points):
        return [(round(x * self.s), round(y * self.s)) for x, y in points]

    def _layer(self, paint):
        layer = Image.new("RGBA", self.img.size, (0, 0, 0, 0))
        paint(ImageDraw.Draw(layer))
        self.img.alpha_composite(layer)

    def rect(self, box, fill):
        self._layer(lambda d: d.rectangle(self._box(box), fill=fill))

    def rrect(self, box, radius, fill=None, outline=None, width=0):
        def paint(d):
            d.rounded_rectangle(self._box(box), radius=round(radius * self.s), fill=fill,
                                outline=outline, width=round(width * self.s))
        self._layer(paint)

    def ellipse(self, box, fill=None, outline=None, width=0):
        self._layer(lambda d: d.ellipse(self._box(box), fill=fill, outline=outline,
                                        width=round(width * self.s)))

    def circle(self, cx, cy, r, fill=None, outline=None, width=0):
        self.ellipse((cx - r, cy - r, cx + r, cy + r), fill, outline, width)

    def polygon(self, points, fill):
        self._layer(lambda d: d.polygon(self._pt(points), fill=fill))

    def polyline(self, points, fill, width):
        """A stroke with round joints and ends."""
        w = round(width * self.s)

        def paint(d):
            pts = self._pt(points)
            d.line(pts, fill=fill, width=w, joint="curve")
            for x, y in (pts[0], pts[-1]):
                d.ellipse((x - w / 2, y - w / 2, x + w / 2, y + w / 2), fill=fill)
        self._layer(paint)

    def arc(self, box, start, end, fill, width):
        self._layer(lambda d: d.arc(self._box(box), start, end, fill=fill,
                                    width=round(width * self.s)))

    def vgradient(self, box, top, bottom):
        x0, y0, x1, y1 = self._box(box)
        layer = Image.new("RGBA", self.img.size, (0, 0, 0, 0))
        d = ImageDraw.Draw(layer)
        span = max(1, y1 - y0 - 1)
        for y in range(y0, y1):
            t = (y - y0) / span
            d.line([(x0, y), (x1 - 1, y)],
                   fill=tuple(round(a + (b - a) * t) for a, b in zip(top, bottom)))
        self.img.alpha_composite(layer)

    def text(self, cx, cy, text, font_path, size, fill):
        font = ImageFont.truetype(font_path, round(size * self.s))
        self._layer(lambda d: d.text((cx * self.s, cy * self.s), text, font=font, fill=fill,
                                     anchor="mm"))

    def image(self):
        if self.s == 1:
            return self.img
        return self.img.resize((self.w, self.h), Image.LANCZOS)


# --- Screen furniture --------------------------------------------------------

def draw_background(font):
    # Large and made of straight edges only: drawn at its own size.
    c = Canvas(SCREEN_W, SCREEN_H, rgba(BG), scale=1)
    c.vgradient((0, 80, SCREEN_W, 650), rgba(BG), rgba(BG_LOW))
    # Top bar (title, back arrow, status icons) and bottom bar (button tips).
    # Status slots are cleaned by copying from here, so both bands are
    # plain along x.
    c.rect((0, 0, SCREEN_W, 80), rgba(BAR))
    c.rect((0, 79, SCREEN_W, 80), rgba(LINE))
    c.rect((0, 650, SCREEN_W, SCREEN_H), rgba(BAR))
    c.rect((0, 650, SCREEN_W, 651), rgba(LINE))
    return c.image()


def draw_float_mask(font):
    return Canvas(SCREEN_W, SCREEN_H, (0, 0, 0, 150), scale=1).image()


def draw_video_window(font):
    c = Canvas(610, 360)
    c.rrect((0, 0, 610, 360), 16, fill=rgba(FIELD), outline=rgba(LINE), width=1)
    return c.image()


def draw_play_badge(font):
    c = Canvas(120, 120)
    c.circle(60, 60, 57, fill=(12, 15, 22, 190), outline=rgba(ACCENT), width=4)
    c.polygon([(48, 38), (48, 82), (84, 60)], rgba(WHITE))
    return c.image()


def draw_control_panel(font):
    # Ends 5 pixels above the bottom bar, like the gap above it.
    c = Canvas(610, 190)
    c.rrect((0, 0, 610, 190), 16, fill=rgba(PANEL), outline=rgba(LINE), width=1)
    return c.image()


def draw_control_panel_full(font):
    c = Canvas(1240, 96)
    c.rrect((0, 0, 1240, 96), 18, fill=(14, 18, 27, 210))
    return c.image()


def draw_fullscreen_title(font):
    c = Canvas(1240, 64)
    c.rrect((0, 0, 1240, 64), 18, fill=(14, 18, 27, 210))
    return c.image()


# --- Progress bar ------------------------------------------------------------
# Every piece is 20 high with the 6-pixel track from row 7, since all are
# drawn at the bar's origin y; the knob ends the filled part.

TRACK_TOP, TRACK_BOTTOM, BAR_H = 7, 13, 20


def draw_progress_track(width):
    def draw(font):
        c = Canvas(width, BAR_H)
        c.rrect((0, TRACK_TOP, width, TRACK_BOTTOM), 3, fill=rgba(RAISED))
        return c.image()
    return draw


def draw_slider_left(font):
    c = Canvas(6, BAR_H)
    c.rrect((0, TRACK_TOP, 12, TRACK_BOTTOM), 3, fill=rgba(ACCENT))
    return c.image()


def draw_slider_middle(font):
    c = Canvas(2, BAR_H)
    c.rect((0, TRACK_TOP, 2, TRACK_BOTTOM), rgba(ACCENT))
    return c.image()


def draw_slider_right(font):
    c = Canvas(20, BAR_H)
    c.rect((0, TRACK_TOP, 10, TRACK_BOTTOM), rgba(ACCENT))
    c.circle(10, 10, 9.5, fill=(0, 0, 0, 70))
    c.circle(10, 10, 8, fill=rgba(WHITE), outline=rgba(ACCENT), width=2)
    return c.image()


# --- Control buttons (80 x 60) -----------------------------------------------

BTN_W, BTN_H = 80, 60


def button(glyph, primary=False):
    def draw(font):
        c = Canvas(BTN_W, BTN_H)
        c.rrect((0, 0, BTN_W, BTN_H), 14, fill=rgba(ACCENT if primary else RAISED))
        glyph(c, rgba(BG if primary else WHITE))
        return c.image()
    return draw


def glyph_play(c, ink):
    c.polygon([(33, 17), (33, 43), (54, 30)], ink)


def glyph_pause(c, ink):
    c.rrect((29, 17, 36, 43), 2, fill=ink)
    c.rrect((44, 17, 51, 43), 2, fill=ink)


def glyph_previous(c, ink):
    c.rrect((24, 18, 29, 42), 2, fill=ink)
    c.polygon([(54, 18), (54, 42), (32, 30)], ink)


def glyph_next(c, ink):
    c.polygon([(26, 18), (26, 42), (48, 30)], ink)
    c.rrect((51, 18, 56, 42), 2, fill=ink)


def glyph_full_screen(c, ink):
    x0, y0, x1, y1, arm, w = 26, 16, 54, 44, 9, 3.5
    for (x, y, dx, dy) in ((x0, y0, 1, 1), (x1, y0, -1, 1), (x0, y1, 1, -1), (x1, y1, -1, -1)):
        c.polyline([(x + dx * arm, y), (x, y), (x, y + dy * arm)], ink, w)


def glyph_config(c, ink):
    cx, cy, teeth = 40, 30, 8
    points = []
    for i in range(teeth * 4):
        angle = 2 * math.pi * i / (teeth * 4) - math.pi / (teeth * 4) * 1.5
        r = 14 if (i % 4) in (0, 1) else 10.5
        points.append((cx + r * math.cos(angle), cy + r * math.sin(angle)))
    c.polygon(points, ink)
    c.circle(cx, cy, 5, fill=rgba(RAISED))


# --- Button tips -------------------------------------------------------------

def key_round(label, size=40, text_size=None):
    def draw(font):
        c = Canvas(size, size)
        c.circle(size / 2, size / 2, size / 2 - 0.5, fill=rgba(KEYCAP))
        c.text(size / 2, size / 2 + 0.5, label, font, text_size or size * 0.5, rgba(WHITE))
        return c.image()
    return draw


def key_pill(label, w, h, text_size):
    def draw(font):
        c = Canvas(w, h)
        c.rrect((0, 0, w, h), h / 2, fill=rgba(KEYCAP))
        c.text(w / 2, h / 2 + 0.5, label, font, text_size, rgba(WHITE))
        return c.image()
    return draw


def key_menu(font):
    c = Canvas(40, 40)
    c.circle(20, 20, 19.5, fill=rgba(KEYCAP))
    for y in (13, 20, 27):
        c.polyline([(12, y), (28, y)], rgba(WHITE), 3)
    return c.image()


# --- Lists, settings and dialogs ---------------------------------------------

def row(w, h, focused):
    def draw(font):
        c = Canvas(w, h)
        if focused:
            c.rrect((0, 0, w, h), 12, fill=rgba(ACCENT, 40), outline=rgba(ACCENT), width=2)
        else:
            c.rrect((0, 0, w, h), 12, fill=(255, 255, 255, 12))
        return c.image()
    return draw


def draw_textfield(font):
    c = Canvas(500, 60)
    c.rrect((0, 0, 500, 60), 30, fill=rgba(FIELD), outline=rgba(LINE), width=1)
    return c.image()


def arrow(direction, ink):
    def draw(font):
        c = Canvas(72, 60)
        if direction < 0:
            c.polyline([(41, 18), (29, 30), (41, 42)], rgba(ink), 4)
        else:
            c.polyline([(31, 18), (43, 30), (31, 42)], rgba(ink), 4)
        return c.image()
    return draw


def draw_popup(font):
    w, h = 720, 488
    c = Canvas(w, h)
    c.rrect((0, 0, w, h), 24, fill=rgba(PANEL), outline=rgba(LINE), width=1)
    c.rect((60, 156, w - 60, 157), rgba(LINE))
    return c.image()


def dialog_button(focused):
    def draw(font):
        c = Canvas(210, 64)
        if focused:
            c.rrect((0, 0, 210, 64), 32, fill=rgba(ACCENT, 60), outline=rgba(ACCENT), width=2)
        else:
            c.rrect((0, 0, 210, 64), 32, fill=rgba(RAISED))
        return c.image()
    return draw


# --- Row marks and list icons ------------------------------------------------

def draw_mark_playing(font):
    c = Canvas(36, 36)
    c.circle(18, 18, 17.5, fill=rgba(ACCENT))
    for x, top in ((10, 14), (16.5, 9), (23, 17)):
        c.rrect((x, top, x + 4, 27), 1.5, fill=rgba(BG))
    return c.image()


def draw_mark_paused(font):
    c = Canvas(36, 36)
    c.circle(18, 18, 17.5, fill=rgba(MUTED))
    c.rrect((12, 10, 16, 26), 1.5, fill=rgba(BG))
    c.rrect((20, 10, 24, 26), 1.5, fill=rgba(BG))
    return c.image()


def draw_folder(font):
    c = Canvas(48, 48)
    c.rrect((4, 9, 22, 18), 3, fill=rgba(ACCENT_DEEP))
    c.rrect((4, 13, 44, 39), 4, fill=rgba(ACCENT_DEEP))
    c.rrect((4, 17, 44, 40), 4, fill=rgba(ACCENT))
    return c.image()


def draw_video_file(font):
    c = Canvas(48, 48)
    c.rrect((5, 8, 43, 40), 6, fill=rgba(WHITE))
    for x in (9, 17, 25, 33):
        c.rrect((x, 10.5, x + 5, 13.5), 1, fill=rgba(BG))
        c.rrect((x, 34.5, x + 5, 37.5), 1, fill=rgba(BG))
    c.polygon([(20, 17), (20, 31), (31, 24)], rgba(ACCENT_DEEP))
    return c.image()


# --- Top bar -----------------------------------------------------------------

def draw_back(font):
    c = Canvas(56, 56)
    c.circle(28, 28, 24, fill=rgba(RAISED))
    c.polyline([(38, 28), (18, 28)], rgba(WHITE), 4)
    c.polyline([(27, 19), (18, 28), (27, 37)], rgba(WHITE), 4)
    return c.image()


def battery(level, fill):
    def draw(font):
        c = Canvas(32, 18)
        outline = RED if level == 0 else WHITE
        c.rrect((1, 1, 28, 17), 3.5, outline=rgba(outline), width=2)
        c.rrect((28.5, 6, 31, 12), 1, fill=rgba(outline))
        if level > 0:
            c.rrect((4, 4, 4 + 21 * level / 100, 14), 1.5, fill=rgba(fill))
        return c.image()
    return draw


def draw_charging(font):
    c = Canvas(16, 26)
    c.polygon([(10, 1), (2, 15), (7.5, 15), (5, 25), (14, 10), (8.5, 10), (11, 1)], rgba(ACCENT))
    return c.image()


def speaker(c, ink):
    c.rrect((2, 10, 9, 18), 1.5, fill=ink)
    c.polygon([(7, 10), (15, 3), (15, 25), (7, 18)], ink)


def draw_sound(font):
    c = Canvas(30, 28)
    ink = rgba(WHITE)
    speaker(c, ink)
    c.arc((11, 8, 23, 20), -55, 55, ink, 2.5)
    c.arc((11, 3, 29, 25), -55, 55, ink, 2.5)
    return c.image()


def draw_mute(font):
    c = Canvas(30, 28)
    speaker(c, rgba(WHITE))
    c.polyline([(19, 9), (28, 18)], rgba(RED), 2.5)
    c.polyline([(28, 9), (19, 18)], rgba(RED), 2.5)
    return c.image()


def wifi(bars):
    def draw(font):
        c = Canvas(30, 24)
        cx, cy = 15, 21
        for i, r in enumerate((8.5, 14.5, 20.5)):
            ink = rgba(WHITE) if i < bars else (255, 255, 255, 70)
            c.arc((cx - r, cy - r, cx + r, cy + r), 225, 315, ink, 3)
        c.circle(cx, cy - 1, 2.6, fill=rgba(WHITE))
        return c.image()
    return draw


def draw_hotspot(font):
    c = Canvas(30, 26)
    ink = rgba(WHITE)
    c.circle(15, 12, 3, fill=ink)
    c.rrect((14, 14, 16, 25), 1, fill=ink)
    for r in (7, 12):
        box = (15 - r, 12 - r, 15 + r, 12 + r)
        c.arc(box, 135, 225, ink, 2.5)
        c.arc(box, -45, 45, ink, 2.5)
    return c.image()


def draw_headphone(font):
    c = Canvas(30, 28)
    ink = rgba(WHITE)
    c.arc((3, 3, 27, 29), 180, 360, ink, 3)
    c.rrect((2, 15, 9, 26), 3, fill=ink)
    c.rrect((21, 15, 28, 26), 3, fill=ink)
    return c.image()


# Every image the program loads, with the function that draws it.
IMAGES = {
    "bg.png": draw_background,
    "float-win-mask.png": draw_float_mask,
    "bg-video-window.png": draw_video_window,
    "icon-player.png": draw_play_badge,
    "bg-control-panel.png": draw_control_panel,
    "bg-control-panel-full.png": draw_control_panel_full,
    "bg-full-screen-title.png": draw_fullscreen_title,
    "progress-bg.png": draw_progress_track(570),
    "progress-bg-full.png": draw_progress_track(1200),
    "progress-slider-left.png": draw_slider_left,
    "progress-slider-middle.png": draw_slider_middle,
    "progress-slider-right.png": draw_slider_right,
    "btn-full-screen.png": button(glyph_full_screen),
    "btn-previous.png": button(glyph_previous),
    "btn-play.png": button(glyph_play, primary=True),
    "btn-pause.png": button(glyph_pause, primary=True),
    "btn-next.png": button(glyph_next),
    "btn-config.png": button(glyph_config),
    "tips-A.png": key_round("A"),
    "tips-B.png": key_round("B"),
    "tips-MENU2.png": key_menu,
    # Under the control buttons, centred on them.
    "tips-L.png": key_pill("L", 52, 28, 15),
    "tips-R.png": key_pill("R", 52, 28, 15),
    "tips-SELECT.png": key_pill("SELECT", 100, 28, 13),
    "tips-START.png": key_pill("START", 100, 28, 13),
    "tips-MENU.png": key_pill("MENU", 100, 28, 13),
    # Rows are 96 apart; 80 high keeps the last one above the bottom bar.
    "bg-list-f.png": row(600, 80, True),
    "bg-list-n.png": row(600, 80, False),
    "bg-list-long-a.png": row(1260, 80, True),
    "bg-list-long-n.png": row(1260, 80, False),
    "bg-setting-textfield.png": draw_textfield,
    "ic-left-arrow-a.png": arrow(-1, ACCENT),
    "ic-left-arrow-n.png": arrow(-1, MUTED),
    "ic-right-arrow-a.png": arrow(1, ACCENT),
    "ic-right-arrow-n.png": arrow(1, MUTED),
    "pop-bg.png": draw_popup,
    "btn-bg-f.png": dialog_button(True),
    "btn-bg-n.png": dialog_button(False),
    "show-player.png": draw_mark_playing,
    "show-pause.png": draw_mark_paused,
    "ic-folder.png": draw_folder,
    "ic-video.png": draw_video_file,
    "icon-back.png": draw_back,
    "ic-batery-100%.png": battery(100, WHITE),
    "ic-batery-75%.png": battery(75, WHITE),
    "ic-batery-50%.png": battery(50, WHITE),
    "ic-batery-25%.png": battery(25, AMBER),
    "ic-batery-0%.png": battery(0, RED),
    "ic-charging.png": draw_charging,
    "ic-sound-n.png": draw_sound,
    "ic-sound-mute.png": draw_mute,
    "ic-wifi-01.png": wifi(1),
    "ic-wifi-02.png": wifi(2),
    "ic-wifi-03.png": wifi(3),
    "icon-hotspot.png": draw_hotspot,
    "icon-bluetooth-headphone.png": draw_headphone,
}


def write_skin(out_dir, font):
    os.makedirs(out_dir, exist_ok=True)
    for name, draw in IMAGES.items():
        image = draw(font)
        # Opaque images are saved without alpha. The toolkit then converts
        # them once, at load, to the screen's own pixel format, which the
        # renderer copies much faster than the RGBA byte order of a PNG
        # with alpha (the frame bench shows it).
        if image.mode == "RGBA" and image.getextrema()[3] == (255, 255):
            image = image.convert("RGB")
        image.save(os.path.join(out_dir, name), optimize=True)


# --- Preview -----------------------------------------------------------------

class Screen:
    """One 1280 x 720 screen put together from the drawn images."""

    def __init__(self, skin_dir, text_font, base=None):
        self.skin_dir = skin_dir
        self.text_font = text_font
        self.img = base.copy() if base else Image.new("RGBA", (SCREEN_W, SCREEN_H), (0, 0, 0, 255))
        self.draw = ImageDraw.Draw(self.img)

    def load(self, name):
        return Image.open(os.path.join(self.skin_dir, name)).convert("RGBA")

    def put(self, name, x, y):
        image = self.load(name)
        self.img.alpha_composite(image, (x, y))
        return image.size

    def text(self, x, y, text, size, fill=WHITE, anchor="la"):
        font = ImageFont.truetype(self.text_font, size)
        ImageDraw.Draw(self.img).text((x, y), text, font=font, fill=fill, anchor=anchor)
        return round(font.getlength(text))

    def slot_icon(self, name, slot_x):
        w, h = self.load(name).size
        self.put(name, slot_x + (33 - w) // 2, 19 + (32 - h) // 2)

    def bars(self, title):
        self.put("bg.png", 0, 0)
        self.put("icon-back.png", 20, 12)
        self.text(110, 22, title, 32)
        # Charging at 57 %: the battery group is 45 + 72 wide.
        self.slot_icon("ic-charging.png", 1240)
        self.slot_icon("ic-batery-75%.png", 1205)
        self.text(1148, 35, "57%", 24, anchor="lm")
        used = 45 + 72
        for name in ("ic-sound-n.png", "ic-wifi-02.png", "icon-bluetooth-headphone.png"):
            self.slot_icon(name, 1223 - used)
            used += 42
        x = 30
        for icon, label in (("tips-A.png", "OPEN"), ("tips-B.png", "BACK"),
                            ("tips-MENU2.png", "MENU")):
            w, h = self.load(icon).size
            self.put(icon, x, 650 + (70 - h) // 2 + 2)
            x += w + 10 + self.text(x + w + 10, 650 + 21, label, 24) + 24

    def progress(self, origin, track, fraction):
        left, middle, right = (self.load("progress-slider-%s.png" % p).size[0]
                               for p in ("left", "middle", "right"))
        x, y = origin
        self.put("progress-slider-left.png", x, y)
        n = int((track - left - right) * fraction / middle)
        for i in range(n):
            self.put("progress-slider-middle.png", x + left + i * middle, y)
        self.put("progress-slider-right.png", x + left + n * middle, y)


def fake_video():
    """A stand-in picture: an evening sky over hills."""
    c = Canvas(SCREEN_W, SCREEN_H, scale=1)
    c.vgradient((0, 0, SCREEN_W, 460), (42, 70, 130, 255), (238, 150, 96, 255))
    c.vgradient((0, 460, SCREEN_W, SCREEN_H), (60, 82, 70, 255), (24, 36, 30, 255))
    c.ellipse((-200, 380, 700, 900), fill=(48, 70, 58, 255))
    c.ellipse((500, 420, 1500, 980), fill=(36, 54, 46, 255))
    c.circle(900, 330, 60, fill=(255, 224, 170, 255))
    return c.image()


def preview_windowed(skin, font):
    s = Screen(skin, font)
    s.bars("Video")
    names = [("Holidays", "ic-folder.png"), ("Concerts", "ic-folder.png"),
             ("Sailing the fjords.mp4", "ic-video.png"), ("Night train.mkv", "ic-video.png"),
             ("城市夜景.mp4", "ic-video.png"), ("Garden timelapse.webm", "ic-video.png")]
    for i, (label, icon) in enumerate(names):
        y = 80 + i * 96
        bg = s.load("bg-list-f.png" if i == 2 else "bg-list-n.png")
        s.img.alpha_composite(bg, (10, y + (96 - bg.size[1]) // 2))
        s.put(icon, 30, y + 24)
        s.text(30 + 48 + 7, y + 48, label, 36, anchor="lm")
        if i == 3:
            s.put("show-pause.png", 560, y + 30)
    s.text(1256, 671, "3/17", 24, anchor="ra")
    s.put("bg-video-window.png", 650, 85)
    s.put("icon-player.png", 895, 205)
    s.put("bg-control-panel.png", 650, 455)
    s.put("progress-bg.png", 670, 475)
    s.progress((670, 475), 570, 0.35)
    s.text(670, 497, "12:34", 24)
    s.text(1240, 497, "35:58", 24, anchor="ra")
    for name, x in (("btn-full-screen.png", 705), ("btn-previous.png", 815), ("btn-play.png", 925),
                    ("btn-next.png", 1035), ("btn-config.png", 1145)):
        s.put(name, x, 540)
    for name, x in (("tips-SELECT.png", 695), ("tips-L.png", 829), ("tips-START.png", 915),
                    ("tips-R.png", 1049), ("tips-MENU.png", 1135)):
        s.put(name, x, 610)
    return s.img


def preview_settings(skin, font):
    s = Screen(skin, font)
    s.bars("Setting")
    rows = [("Quit", None), ("Aspect Ratio", "16:9"), ("AudioTrack", "AudioTrack 1")]
    for i, (label, value) in enumerate(rows):
        focused = i == 1
        x, y = 10, 80 + i * 96
        bg = s.load("bg-list-long-a.png" if focused else "bg-list-long-n.png")
        s.img.alpha_composite(bg, (x, y + (96 - bg.size[1]) // 2))
        s.text(x + 40, y + 48, label, 36, anchor="lm")
        if value is None:
            continue
        state = "a" if focused else "n"
        if focused:
            s.put("bg-setting-textfield.png", x + 745, y + 18)
        s.put("ic-left-arrow-%s.png" % state, x + 745, y + 18)
        s.put("ic-right-arrow-%s.png" % state, x + 1173, y + 18)
        s.text(x + 745 + 250, y + 48, value, 36, anchor="mm")
    return s.img


def preview_dialog(skin, font, under):
    s = Screen(skin, font, base=under)
    s.put("float-win-mask.png", 0, 0)
    w, h = s.load("pop-bg.png").size
    px, py = (SCREEN_W - w) // 2, (SCREEN_H - h) // 2
    s.put("pop-bg.png", px, py)
    s.text(px + w // 2, py + 80 + 22, "Video", 44, fill=ACCENT, anchor="mm")
    s.text(px + w // 2, py + 186 + 50, "Quit VideoPlayer?", 36, fill=ACCENT, anchor="mm")
    bw, bh = s.load("btn-bg-f.png").size
    s.put("btn-bg-n.png", px + 100, py + 390)
    s.text(px + 100 + bw // 2, py + 390 + bh // 2, "Cancel", 36, anchor="mm")
    s.put("btn-bg-f.png", px + 100 + bw + 100, py + 390)
    s.text(px + 200 + bw + bw // 2, py + 390 + bh // 2, "OK", 36, anchor="mm")
    return s.img


def preview_fullscreen(skin, font):
    s = Screen(skin, font, base=fake_video())
    w, h = s.put("bg-full-screen-title.png", 20, 20)
    s.text(20 + w // 2, 20 + h // 2, "Sailing the fjords.mp4", 24, anchor="mm")
    s.put("bg-control-panel-full.png", 20, 596)
    s.put("progress-bg-full.png", 40, 616)
    s.progress((40, 616), 1200, 0.62)
    s.text(40, 638, "22:18", 24)
    s.text(1240, 638, "35:58", 24, anchor="ra")
    return s.img


def write_preview(skin_dir, path):
    font = PREVIEW_FONT if os.path.exists(PREVIEW_FONT) else DEFAULT_FONT
    settings = preview_settings(skin_dir, font)
    screens = [preview_windowed(skin_dir, font), settings,
               preview_dialog(skin_dir, font, settings), preview_fullscreen(skin_dir, font)]
    sheet = Image.new("RGBA", (SCREEN_W, SCREEN_H * len(screens)), (0, 0, 0, 255))
    for i, screen in enumerate(screens):
        sheet.alpha_composite(screen, (0, i * SCREEN_H))
    sheet.convert("RGB").save(path)


def main():
    parser = argparse.ArgumentParser(description="Draws the player's skin images.")
    parser.add_argument("out_dir", help="folder the PNG files are written to")
    parser.add_argument("--font", default=DEFAULT_FONT, help="bold font for key letters")
    parser.add_argument("--preview", metavar="FILE",
                        help="also write a picture of the images laid out on the screens")
    args = parser.parse_args()
    if not os.path.exists(args.font):
        print("make_skin: font %s missing" % args.font, file=sys.stderr)
        return 1
    write_skin(args.out_dir, args.font)
    if args.preview:
        write_preview(args.out_dir, args.preview)
    return 0


if __name__ == "__main__":
    sys.exit(main())
