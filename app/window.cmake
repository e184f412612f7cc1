# The program with windows. Included from the root when Qt 6 is there, behind the folders that it uses.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Charts)
find_package(Qt6WebEngineWidgets 6.4 QUIET)

kelb_library(kelb_window
    SOURCES
        app/Form1.cpp
        app/Form1.ui
        app/FrmStp1.cpp
        app/article_panes.cpp
        app/extractor_window.cpp
        app/form_texts.cpp
        app/job_buttons.cpp
        app/job_contexts.cpp
        app/job_panel.cpp
        app/log_view.cpp
        app/path_field.cpp
        app/progress_meter.cpp
        app/program.cpp
        app/reasons_chart.cpp
        app/reasons_view.cpp
        app/remembered_fields.cpp
        app/results_browser.cpp
        app/results_list.cpp
        app/results_model.cpp
        app/run_options_menu.cpp
        app/source_row_dialog.cpp
        app/start_options.cpp
        app/still_page.cpp
        app/summary_text.cpp
        app/template_windows.cpp
        app/texts.cpp
        app/user_dialogs.cpp
        app/window_host.cpp
    LINKS kelb_jobs Qt6::Widgets
    PRIVATE_LINKS kelb_rwini Qt6::Charts)
if(Qt6WebEngineWidgets_FOUND)
    target_sources(kelb_window PRIVATE app/FrmWebBrowser.cpp app/page_viewer_webengine.cpp)
    target_link_libraries(kelb_window PRIVATE Qt6::WebEngineWidgets)
else()
    message(STATUS "Qt WebEngine not found: the page viewer is left out")
    target_sources(kelb_window PRIVATE app/page_viewer_missing.cpp)
endif()
# The form is generated from its file alone: it need not wait for the libraries.
set_target_properties(kelb_window PROPERTIES AUTOMOC ON AUTOUIC ON AUTOGEN_ORIGIN_DEPENDS OFF)

add_executable(KelbExtractor app/main.cpp app/app.qrc)
set_target_properties(KelbExtractor PROPERTIES AUTORCC ON)
target_compile_definitions(KelbExtractor PRIVATE KELB_VERSION="${PROJECT_VERSION}")
target_link_libraries(KelbExtractor PRIVATE kelb_window kelb_warnings)
