-- Runs in Ardour's scripting shell on its dummy backend: each plug-in loads with its channels, limits, follows automation
-- and comes back with its session, presets and all. The first failure ends the shell with a message.
io.stdout:setvbuf("no")
local folder = os.getenv("HOME") .. "/session"
local LV2, VST3 = ARDOUR.PluginType.LV2, ARDOUR.PluginType.VST3
local plugins = {
	{ label = "LV2 mono", type = LV2, id = "urn:quillmark:vanta2:mono", channels = 1 },
	{ label = "LV2 stereo", type = LV2, id = "urn:quillmark:vanta2:stereo", channels = 2 },
	{ label = "LV2 5.0", type = LV2, id = "urn:quillmark:vanta2:5.0", channels = 5 },
	{ label = "LV2 5.1", type = LV2, id = "urn:quillmark:vanta2:5.1", channels = 6 },
	{ label = "LV2 7.1", type = LV2, id = "urn:quillmark:vanta2:7.1", channels = 8 },
	{ label = "LV2 7.1.2", type = LV2, id = "urn:quillmark:vanta2:7.1.2", channels = 10 },
	{ label = "VST3 stereo", type = VST3, id = "Vanta 2", channels = 2 },
	{ label = "VST3 5.1", type = VST3, id = "Vanta 2", channels = 6 },
}
local only = os.getenv("VANTA_FORMATS")

local function check(condition, what)
	if condition then
		print("ok: " .. what)
	else
		print("FAILED: " .. what)
		os.exit(1)
	end
end

-- A control input, counted as set_processor_param counts them, and as the plug-in does.
local function control(plugin, name)
	local count = 0
	for i = 0, plugin:parameter_count() - 1 do
		if plugin:parameter_is_control(i) and plugin:parameter_is_input(i) then
			local _, described = plugin:get_parameter_descriptor(i, ARDOUR.ParameterDescriptor())
			if described[2].label == name then return count, i end
			count = count + 1
		end
	end
	check(false, "there is a parameter " .. name)
end

local function value(limiter, name)
	return (ARDOUR.LuaAPI.get_processor_param(limiter, control(limiter:to_insert():plugin(0), name)))
end

local function set(limiter, name, wanted)
	return ARDOUR.LuaAPI.set_processor_param(limiter, control(limiter:to_insert():plugin(0), name), wanted)
end

local function track(channels, name)
	for each in Session:new_audio_track(channels, channels, nil, 1, name, ARDOUR.PresentationInfo.max_order,
		ARDOUR.TrackMode.Normal, true):iter() do return each end
end

-- The highest sample peak of a track, in dB, while the transport rolls for some seconds.
local function peakWhileRolling(route, seconds)
	local highest = -200
	sleep(1.5) -- meters fall slowly
	Session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
	for _ = 1, seconds * 10 do
		sleep(0.1)
		for channel = 0, route:n_outputs():n_audio() - 1 do
			local level = route:peak_meter():meter_level(channel, ARDOUR.MeterType.MeterPeak)
			if level > highest then highest = level end
		end
	end
	Session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
	sleep(0.2)
	return highest
end

local function automate(limiter, name, from, to, seconds)
	local index, number = control(limiter:to_insert():plugin(0), name)
	local list, line = ARDOUR.LuaAPI.plugin_automation(limiter, index)
	check(not list:isnil(), name .. " can be automated")
	local rate = Session:nominal_sample_rate()
	line:clear_list()
	for i = 0, 10 do
		line:add(Temporal.timepos_t(math.floor(rate * seconds * i / 10)), from + (to - from) * i / 10, false, true)
	end
	local parameter = Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, number)
	limiter:to_automatable():automation_control(parameter, true):set_automation_state(ARDOUR.AutoState.Play)
end

AudioEngine:set_backend("None (Dummy)", "", "")
Session = create_session(folder, "session", 48000)
check(Session, "a session")
for each in ARDOUR.LuaAPI.list_plugins():iter() do
	if each.name:match("^Vanta 2") then print("scanned", each.name, each.unique_id, each.category) end
end

local tested = 0
for _, wanted in ipairs(plugins) do
	local label = wanted.label
	if only and not only:match(label:match("^%w+")) then goto continue end
	tested = tested + 1
	local route = track(wanted.channels, label)
	local limiter = ARDOUR.LuaAPI.new_plugin(Session, wanted.id, wanted.type, "")
	check(not limiter:isnil(), label .. " loads")
	check(route:add_processor_by_index(limiter, 0, nil, true) == 0, label .. " takes its place in a track")
	check(route:n_outputs():n_audio() == wanted.channels, label .. " has " .. wanted.channels .. " channels")
	route:add_processor_by_index(ARDOUR.LuaAPI.new_luaproc(Session, "ACE Noise"), 0, nil, true)
	limiter:activate()
	check(limiter:to_insert():signal_latency() > 0, label .. " is late by " .. limiter:to_insert():signal_latency())

	check(set(limiter, "Gain", 24) and set(limiter, "Output Level", -6) and set(limiter, "Lookahead", 1), label .. " takes values")
	local peak = peakWhileRolling(route, 1)
	check(peak < -5.5 and peak > -15, string.format("%s limits to -6 dB: %.2f dB", label, peak))

	Session:request_locate(0, false, ARDOUR.LocateTransportDisposition.MustStop, ARDOUR.TransportRequestSource.TRS_UI)
	sleep(0.3)
	automate(limiter, "Output Level", -20, -12, 1)
	peak = peakWhileRolling(route, 2)
	check(math.abs(value(limiter, "Output Level") + 12) < 0.5,
		string.format("%s follows automation: %.2f dB", label, value(limiter, "Output Level")))

	local plugin = limiter:to_insert():plugin(0)
	local preset = plugin:preset_by_label("Club and Dance")
	check(preset and preset.valid and plugin:load_preset(preset), label .. " loads a preset")
	sleep(0.5)
	check(math.abs(value(limiter, "Lookahead") - 0.2) < 0.001, label .. " shows its values")
	set(limiter, "Gain", 7.5)
	::continue::
end
check(tested > 0, tested .. " plug-ins")

sleep(0.3)
Session:save_state("")
close_session()
Session = load_session(folder, "session")
check(Session, "the session opens again")
for _, wanted in ipairs(plugins) do
	if not only or only:match(wanted.label:match("^%w+")) then
		local route = Session:route_by_name(wanted.label)
		check(not route:isnil(), wanted.label .. " is there again")
		local limiter = route:nth_plugin(1)
		check(math.abs(value(limiter, "Gain") - 7.5) < 0.001, wanted.label .. " has kept its values")
	end
end
close_session()
print("all passed")
quit()
