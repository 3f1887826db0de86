find_package(Qt5 5.15 REQUIRED COMPONENTS PrintSupport)
find_package(QCustomPlot REQUIRED)

zrt_add_bench(plot zrt_plot QCustomPlot::QCustomPlot)
target_include_directories(bench_plot PRIVATE ${PROJECT_SOURCE_DIR}/tests)
