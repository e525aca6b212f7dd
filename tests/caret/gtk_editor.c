/* A GTK 3 editor with a large document: a text view in a scrolled window holding LINES lines
 * (argument 1, default 20000), the caret placed at line LINES / 2. Prints "ready X Y H" (the
 * caret's rectangle on the screen: left, top, height) once the view has the keyboard focus and
 * the caret is on the screen. On "move" puts the caret 3 lines lower and prints "ready" again;
 * on "quit" leaves. */
#include <X11/Xlib.h>
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static GtkWidget* view;

static gboolean report_caret(gpointer window)
{
    if (!gtk_widget_has_focus(view) || !gtk_window_is_active(GTK_WINDOW(window))) {
        /* Without a window manager nobody gives the window the focus: take it. */
        GdkWindow* own = gtk_widget_get_window(GTK_WIDGET(window));
        if (own != NULL) {
            XSetInputFocus(GDK_WINDOW_XDISPLAY(own), GDK_WINDOW_XID(own), RevertToParent, CurrentTime);
        }
        gtk_widget_grab_focus(view);
        return G_SOURCE_CONTINUE;
    }
    GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
    GtkTextIter caret;
    gtk_text_buffer_get_iter_at_mark(buffer, &caret, gtk_text_buffer_get_insert(buffer));
    GdkRectangle at;
    gtk_text_view_get_iter_location(GTK_TEXT_VIEW(view), &caret, &at);
    GdkRectangle visible;
    gtk_text_view_get_visible_rect(GTK_TEXT_VIEW(view), &visible);
    if (!gdk_rectangle_intersect(&at, &visible, NULL)) {
        /* The first scroll can come before the lines are measured: ask again. */
        gtk_text_view_scroll_to_mark(GTK_TEXT_VIEW(view), gtk_text_buffer_get_insert(buffer), 0.0, TRUE, 0.0,
                                     0.5);
        return G_SOURCE_CONTINUE;
    }
    int wx = 0, wy = 0, ox = 0, oy = 0;
    gtk_text_view_buffer_to_window_coords(GTK_TEXT_VIEW(view), GTK_TEXT_WINDOW_TEXT, at.x, at.y, &wx, &wy);
    gdk_window_get_origin(gtk_text_view_get_window(GTK_TEXT_VIEW(view), GTK_TEXT_WINDOW_TEXT), &ox, &oy);
    /* Scrolling a long buffer settles over several frames: report a caret that held still. */
    static int last_x = -1, last_y = -1;
    if (ox + wx != last_x || oy + wy != last_y) {
        last_x = ox + wx;
        last_y = oy + wy;
        return G_SOURCE_CONTINUE;
    }
    last_x = last_y = -1;
    printf("ready %d %d %d\n", ox + wx, oy + wy, at.height);
    fflush(stdout);
    return G_SOURCE_REMOVE;
}

static void place_caret(int line)
{
    GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
    GtkTextIter at;
    gtk_text_buffer_get_iter_at_line_offset(buffer, &at, line, 6);
    gtk_text_buffer_place_cursor(buffer, &at);
    gtk_text_view_scroll_to_mark(GTK_TEXT_VIEW(view), gtk_text_buffer_get_insert(buffer), 0.0, TRUE, 0.0,
                                 0.5);
}

static gboolean on_input(GIOChannel* channel, GIOCondition condition, gpointer window)
{
    (void)condition;
    char chunk[256];
    const ssize_t n = read(g_io_channel_unix_get_fd(channel), chunk, sizeof(chunk) - 1);
    chunk[n > 0 ? n : 0] = '\0';
    if (n <= 0 || strstr(chunk, "quit") != NULL) {
        gtk_main_quit();
        return G_SOURCE_REMOVE;
    }
    if (strstr(chunk, "move") != NULL) {
        GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
        GtkTextIter caret;
        gtk_text_buffer_get_iter_at_mark(buffer, &caret, gtk_text_buffer_get_insert(buffer));
        place_caret(gtk_text_iter_get_line(&caret) + 3);
        g_timeout_add(50, report_caret, window);
    }
    return G_SOURCE_CONTINUE;
}

int main(int argc, char* argv[])
{
    gtk_init(&argc, &argv);
    const int lines = argc > 1 ? atoi(argv[1]) : 20000;
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "large document");
    gtk_window_set_default_size(GTK_WINDOW(window), 800, 600);
    gtk_window_move(GTK_WINDOW(window), 50, 50);
    GtkWidget* scroller = gtk_scrolled_window_new(NULL, NULL);
    view = gtk_text_view_new();
    gtk_container_add(GTK_CONTAINER(scroller), view);
    gtk_container_add(GTK_CONTAINER(window), scroller);

    GString* text = g_string_sized_new((gsize)lines * 64);
    for (int i = 0; i < lines; ++i) {
        g_string_append_printf(text,
                               "%05d the quick brown fox jumps over the lazy dog, line of a long file\n", i);
    }
    gtk_text_buffer_set_text(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)), text->str, (int)text->len);
    g_string_free(text, TRUE);
    place_caret(lines / 2);

    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), NULL);
    gtk_widget_show_all(window);
    GIOChannel* input = g_io_channel_unix_new(0);
    g_io_add_watch(input, G_IO_IN | G_IO_HUP, on_input, window);
    g_timeout_add(50, report_caret, window);
    gtk_main();
    return 0;
}
