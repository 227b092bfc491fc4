// Measures reading a DashboardResponse from bytes, parsing alone, and reading with two other libraries.

#include "Json.h"
#include "Records.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;

namespace {

QByteArray listing(std::int64_t packages)
{
    DashboardResponse reply{.status = u"success"_s,
                            .avatar = std::nullopt,
                            .paquetes = QList<DashboardResponse::Paquete>(),
                            .cotizaciones = QList<DashboardResponse::Cotizacion>()};
    for (std::int64_t i = 0; i < packages; ++i)
        reply.paquetes->append({.tracking = u"MRV-%1"_s.arg(i),
                                .descripcion = u"Repuestos electrónicos y cámara, caja número %1"_s.arg(i),
                                .estado = i % 3 ? u"en tránsito"_s : u"recibido"_s,
                                .fecha_recibido = u"2026-10-%1"_s.arg(i % 28 + 1)});
    return Json::write(reply).value();
}

void record(benchmark::State &state)
{
    const QByteArray bytes = listing(state.range(0));
    for (auto step : state) {
        // Like the transport, provide an unshared array with spare capacity.
        state.PauseTiming();
        QByteArray reply;
        reply.reserve(bytes.size() + Json::readBeyond);
        reply.append(bytes);
        state.ResumeTiming();
        auto result = Json::readAndFree<DashboardResponse>(std::move(reply));
        benchmark::DoNotOptimize(result);
    }
}

void parsingAlone(benchmark::State &state)
{
    const QByteArray bytes = listing(state.range(0));
    for (auto step : state) {
        simdjson::dom::parser parser;
        simdjson::dom::element root;
        auto error = parser.parse(bytes.constData(), static_cast<std::size_t>(bytes.size())).get(root);
        benchmark::DoNotOptimize(error);
    }
}

std::optional<QString> text(const QJsonObject &from, QLatin1StringView key)
{
    const QJsonValue value = from.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

void qtDocument(benchmark::State &state)
{
    const QByteArray bytes = listing(state.range(0));
    for (auto step : state) {
        const QJsonObject root = QJsonDocument::fromJson(bytes).object();
        DashboardResponse reply{.status = text(root, "status"_L1),
                                .avatar = text(root, "avatar"_L1),
                                .paquetes = QList<DashboardResponse::Paquete>(),
                                .cotizaciones = QList<DashboardResponse::Cotizacion>()};
        const QJsonArray rows = root.value("paquetes"_L1).toArray();
        reply.paquetes->reserve(rows.size());
        for (const auto &each : rows) {
            const QJsonObject row = each.toObject();
            reply.paquetes->append({.tracking = text(row, "tracking"_L1),
                                    .descripcion = text(row, "descripcion"_L1),
                                    .estado = text(row, "estado"_L1),
                                    .fecha_recibido = text(row, "fecha_recibido"_L1)});
        }
        benchmark::DoNotOptimize(reply);
    }
}

std::optional<QString> text(const nlohmann::json &from, const char *key)
{
    const auto found = from.find(key);
    return found != from.end() && found->is_string()
               ? std::optional(QString::fromStdString(found->get_ref<const std::string &>()))
               : std::nullopt;
}

void nlohmannDocument(benchmark::State &state)
{
    const QByteArray bytes = listing(state.range(0));
    for (auto step : state) {
        const nlohmann::json root = nlohmann::json::parse(bytes.begin(), bytes.end());
        DashboardResponse reply{.status = text(root, "status"),
                                .avatar = text(root, "avatar"),
                                .paquetes = QList<DashboardResponse::Paquete>(),
                                .cotizaciones = QList<DashboardResponse::Cotizacion>()};
        const nlohmann::json &rows = root.at("paquetes");
        reply.paquetes->reserve(static_cast<qsizetype>(rows.size()));
        for (const auto &row : rows) {
            reply.paquetes->append({.tracking = text(row, "tracking"),
                                    .descripcion = text(row, "descripcion"),
                                    .estado = text(row, "estado"),
                                    .fecha_recibido = text(row, "fecha_recibido")});
        }
        benchmark::DoNotOptimize(reply);
    }
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Unit(benchmark::kMicrosecond);
    for (const int packages : {10, 100, 1000, 10'000, 100'000, 400'000})
        benchmark->Arg(packages);
}

BENCHMARK(record)->Apply(sizes);
BENCHMARK(parsingAlone)->Apply(sizes);
BENCHMARK(qtDocument)->Apply(sizes);
BENCHMARK(nlohmannDocument)->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
