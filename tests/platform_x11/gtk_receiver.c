/* A GTK 3 window with one text view, the kind of field most desktop editors are. Speaks the
 * same lines as typing_receiver: prints "ready WINID" once the view has the keyboard focus (0 as
 * the id on Wayland, GDK_BACKEND=wayland); on
 * "get" prints "text:" and the buffer, "select TEXT" makes TEXT its content and selects it
 * (the PRIMARY selection) and prints it as "get" does, on "quit" leaves (one request at a time). With "--busy MS" each change
 * of the buffer costs MS milliseconds of work, as in an editor that highlights or counts as you type. */
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static GtkWidget* view;
static int busy_ms;

static void on_changed(GtkTextBuffer* buffer, gpointer data)
{
    (void)buffer;
    (void)data;
    if (busy_ms > 0) {
        const gint64 until = g_get_monotonic_time() + busy_ms * 1000;
        while (g_get_monotonic_time() < until) {
        }
    }
}

static gboolean watch_focus(gpointer window)
{
    if (gtk_widget_has_focus(view) && gtk_window_is_active(GTK_WINDOW(window))) {
        GdkWindow* native = gtk_widget_get_window(window);
        printf("ready %lu\n", GDK_IS_X11_WINDOW(native) ? (unsigned long)gdk_x11_window_get_xid(native) : 0UL);
        fflush(stdout);
        return G_SOURCE_REMOVE;
    }
    gtk_window_present(GTK_WINDOW(window));
    gtk_widget_grab_focus(view);
    return G_SOURCE_CONTINUE;
}

static gboolean on_input(GIOChannel* channel, GIOCondition condition, gpointer data)
{
    (void)condition;
    (void)data;
    char chunk[256];
    const ssize_t n = read(g_io_channel_unix_get_fd(channel), chunk, sizeof(chunk) - 1);
    chunk[n > 0 ? n : 0] = '\0';
    if (n <= 0 || strstr(chunk, "quit") != NULL) {
        gtk_main_quit();
        return G_SOURCE_REMOVE;
    }
    GtkTextBuffer* buffer = gtk_text_view_get_buffer(GTK_TEXT_VIEW(view));
    GtkTextIter start, stop;
    if (strncmp(chunk, "select ", 7) == 0) {
        chunk[strcspn(chunk, "\n")] = '\0';
        gtk_text_buffer_set_text(buffer, chunk + 7, -1);
        gtk_text_buffer_get_bounds(buffer, &start, &stop);
        gtk_text_buffer_select_range(buffer, &start, &stop);
    }
    gtk_text_buffer_get_bounds(buffer, &start, &stop);
    gchar* text = gtk_text_buffer_get_text(buffer, &start, &stop, FALSE);
    printf("text:%s\n", text);
    fflush(stdout);
    g_free(text);
    return G_SOURCE_CONTINUE;
}

int main(int argc, char* argv[])
{
    gtk_init(&argc, &argv);
    if (argc == 3 && strcmp(argv[1], "--busy") == 0) {
        busy_ms = atoi(argv[2]);
    }
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "gtk receiver");
    gtk_window_set_default_size(GTK_WINDOW(window), 600, 300);
    view = gtk_text_view_new();
    gtk_text_view_set_wrap_mode(GTK_TEXT_VIEW(view), GTK_WRAP_CHAR);
    gtk_container_add(GTK_CONTAINER(window), view);
    g_signal_connect(gtk_text_view_get_buffer(GTK_TEXT_VIEW(view)), "changed", G_CALLBACK(on_changed), NULL);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), NULL);
    gtk_widget_show_all(window);

    GIOChannel* input = g_io_channel_unix_new(0);
    g_io_add_watch(input, G_IO_IN | G_IO_HUP, on_input, NULL);
    g_timeout_add(20, watch_focus, window);
    gtk_main();
    return 0;
}
