// Services of the host's GUI process (libolma-gui): screenshots, serial number, and notice of
// changed buzzer and backlight settings.
//
// All functions have C linkage and never throw.
#ifndef OLMA_GUI_H
#define OLMA_GUI_H

#ifdef __cplusplus
extern "C" {
#endif

// Writes a BMP of the whole screen to relativePath below the directory that dirMacro names
// ("$OLMA_DIR_USER": Olma_GetDirectory(8)); missing directories are made. The rectangle (pixels; 0,
// 0, 0, 0: everything) names the part the caller is interested in and does not cut the picture: its
// coordinates stay those of the screen, and the caller takes its part out of the file. flag is
// always 1. 0 = done.
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
