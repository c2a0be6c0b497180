// Services of the host's GUI process (libolma-gui): screenshots, serial number, and notice of
// changed buzzer and backlight settings.
//
// All functions have C linkage and never throw.
#ifndef OLMA_GUI_H
#define OLMA_GUI_H

#ifdef __cplusplus
extern "C" {
#endif

// Writes a BMP of the screen, or of a rectangle of it, to relativePath below the directory that
// dirMacro names ("$OLMA_DIR_USER": Olma_GetDirectory(8)). flag is always 1. Pixels; a width and
// height of 0 mean the whole screen. 0 = done.
int __gui_screen_capture(const char* dirMacro, const char* relativePath, int flag, int x, int y,
                         int width, int height);

// The panel's serial number; never null, "" when it has none. The text belongs to the GUI.
const char* __gui_get_serial_number(void);

// The GUI's current buzzer duration (ms), backlight switch and backlight delay (ms). reload 1
// makes the GUI read its settings file again first.
int __gui_get_buzzing_time(int reload);
int __gui_get_lcdlight_status(int reload);
int __gui_get_lcdlight_time(int reload);
// Starts the backlight switch-off delay anew.
void __gui_reset_lcdlight_timer(void);

#ifdef __cplusplus
}
#endif

#endif
